// The registrar: carries out registry scripts in either direction.
#pragma once

#include "platform.h"

namespace mirolta {

// RegisterScript writes what a script lists, UnregisterScript removes it. A script that cannot be
// read is refused before anything is changed.
// Errors: those of RunRegistryScript; the registry's, as HRESULT_FROM_WIN32. What is missing when
//         it should be removed is no failure.
HRESULT RegisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file);
HRESULT UnregisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file);

}  // namespace mirolta
