// A type library's tables, copied out of the module that carries them: type information may outlive
// the module, so it must not point into it. Only the calls still lead there, and they are made on
// live objects, which keep their module loaded.
#pragma once

#include "portable/module_resources.h"

namespace mirolta {

// One block of memory holds the copy and all its texts.
struct CopiedLibrary {
  LONG volatile references;
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

// MakeTypeInfo returns the type information of type `index` (< TypeCount), or of the root dispatch
// interface for kDispatchType. The object holds a reference to the library.
constexpr UINT kDispatchType = 0xFFFFFFFFu;
HRESULT MakeTypeInfo(CopiedLibrary* library, UINT index, ITypeInfo** out);
// MakeTypeLib returns the library object; it takes over the caller's reference.
HRESULT MakeTypeLib(CopiedLibrary* library, ITypeLib** out);

// InvokeMember makes a late-bound call through an interface table: finds the member by id and kind,
// brings the arguments to the declared types, fills in defaults, calls, and hands back the result.
HRESULT InvokeMember(const InterfaceTable& table, void* instance, DISPID id, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* bad_argument);

// GiveDocumentation is GetDocumentation of a type, member or library with these texts; a null text
// is given as null. Errors: E_OUTOFMEMORY, with nothing given.
HRESULT GiveDocumentation(const OLECHAR* name_text, const OLECHAR* help_text, BSTR* name,
                          BSTR* help, DWORD* help_context, BSTR* help_file);

}  // namespace mirolta
