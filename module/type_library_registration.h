// Registration of the type library.
#pragma once

#include "platform.h"

namespace mirolta {

// FindModuleTypeLibrary loads the library from the module's file or, if that has none, from the
// file of the same name with the extension ".tlb"; `file` is the one that it was found in.
// Errors: the loader's status for the second file; E_FAIL if the module has no file name.
HRESULT FindModuleTypeLibrary(ITypeLib** library, OLECHAR (&file)[MAX_PATH + 5]);

// RegisterModuleTypeLibrary registers the library with the module's folder as its help directory.
// UnregisterModuleTypeLibrary removes the registration; on a system without that operation it does
// nothing and succeeds.
HRESULT RegisterModuleTypeLibrary();
HRESULT UnregisterModuleTypeLibrary();

}  // namespace mirolta
