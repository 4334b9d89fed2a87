// The type library's registration.
#pragma once

#include "platform.h"

namespace mirolta {

// FindModuleTypeLibrary loads the library from the module's file or, if it has none, from the file
// of the same name with the ending ".tlb"; `file` is the one that it was found in.
// Errors: the loader's status for the second file; E_FAIL if the module has no file name.
HRESULT FindModuleTypeLibrary(ITypeLib** library, OLECHAR (&file)[MAX_PATH + 5]);

// RegisterModuleTypeLibrary registers the library with the module's folder as its help directory.
// UnregisterModuleTypeLibrary takes that back; a system without the operation for it is no failure.
HRESULT RegisterModuleTypeLibrary();
HRESULT UnregisterModuleTypeLibrary();

}  // namespace mirolta
