// The registrar: executes registry scripts for registration and unregistration.
#pragma once

#include "platform.h"

namespace mirolta {

// RegisterScript writes the keys and values of a script, UnregisterScript removes them. A malformed
// script is refused before anything is changed.
// Errors: those of RunRegistryScript; the registry's, as HRESULT_FROM_WIN32. A key or value to be
//         removed that does not exist is no failure.
HRESULT RegisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file);
HRESULT UnregisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file);

}  // namespace mirolta
