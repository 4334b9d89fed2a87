// Many writes to the registry as one change.
#pragma once

#include "system_headers.h"

namespace mirolta {

// AsOneRegistryChange does the work so that what it writes takes effect at once, whole or not at
// all, also if it fails half-way; other threads and processes see the registry before or after it.
// On Windows, whose registry has no such change without its own functions for it, every write takes
// effect by itself.
// Errors: those of the work; if there are none, the registry's for reading or writing it.
HRESULT AsOneRegistryChange(HRESULT (*work)()) noexcept;

}  // namespace mirolta
