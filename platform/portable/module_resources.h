// A module's resources: strings, raw data by type and number, and its type library. On Windows they
// are resources of the file; a module of this runtime attaches a table of them.
#pragma once

#include "seam/type_tables.h"

namespace mirolta {

struct StringResource {
  UINT id;
  const OLECHAR* text;
};

struct DataResource {
  const OLECHAR* type;  // such as "REGISTRY"
  WORD id;
  const BYTE* bytes;
  DWORD size;
};

struct ModuleResources {
  const StringResource* strings;
  unsigned string_count;
  const DataResource* data;
  unsigned data_count;
  const TypeLibraryTable* type_library;
};

extern "C" {
// MiroltaAttachModule registers a module's resources and returns its handle; called when the module
// is loaded. `resources` stays valid until MiroltaDetachModule. The module's file is found from the
// address of its resources.
// Errors: null if memory is short.
MIROLTA_RUNTIME HINSTANCE MiroltaAttachModule(const ModuleResources* resources);
MIROLTA_RUNTIME void MiroltaDetachModule(HINSTANCE module);
// MiroltaModuleResources returns what was attached; null for an unknown handle.
MIROLTA_RUNTIME const ModuleResources* MiroltaModuleResources(HINSTANCE module);
// MiroltaTypeLibFromTable makes a type library that keeps a copy of the table's texts.
MIROLTA_RUNTIME HRESULT MiroltaTypeLibFromTable(const TypeLibraryTable* table, ITypeLib** out);
}

}  // namespace mirolta
