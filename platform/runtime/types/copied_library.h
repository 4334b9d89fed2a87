// A copy of a type library's tables. Type information may outlive the module, so it must not point
// into the module's memory. Only the members' calls do; they are made on live objects, which keep
// their module loaded.
#pragma once

#include "heap/reference_count.h"
#include "seam/type_tables.h"

namespace mirolta::runtime {

// One block of memory holds the copy and all its texts.
struct CopiedLibrary {
  ReferenceCount references;
  GUID id;
  TypeLibraryTable table;  // points into the block
};

// CopyTypeLibrary returns a copy with one reference; null if memory is short.
CopiedLibrary* CopyTypeLibrary(const TypeLibraryTable& table);
void AddReference(CopiedLibrary* library);
void ReleaseReference(CopiedLibrary* library);

// The types of a library are numbered: interfaces first, then classes, each in table order.
inline UINT TypeCount(const CopiedLibrary& library) {
  return library.table.interface_count + library.table.class_count;
}

}  // namespace mirolta::runtime
