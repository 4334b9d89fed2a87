// The modules that this process knows: those that attached their resources and those that were
// loaded by name. A handle is a row of this table.
#pragma once

#include "mirolta/module.h"
#include "portable/module_resources.h"

namespace mirolta::runtime {

// OpenLibrary is LoadLibraryW with a status.
// Errors: E_OUTOFMEMORY; CO_E_DLLNOTFOUND if there is no such file; CO_E_ERRORINDLL if the file is
//         not a module or cannot be loaded; E_ACCESSDENIED in a set-user-id program for a file
//         without an absolute name and for one that others can change.
HRESULT OpenLibrary(LPCWSTR file, HMODULE* out);

// ResourcesOf returns what a handle was attached with; null for an unknown handle.
const ModuleResources* ResourcesOf(HINSTANCE handle);

}  // namespace mirolta::runtime
