// Several writes to the registry as one change.
#pragma once

#include "system_headers.h"

namespace mirolta {

// AsOneRegistryChange runs `work` and makes what it wrote take effect at once, whole or not at all,
// also if `work` fails half-way. Other threads and processes see the registry before or after it.
// On Windows, whose registry functions have no such change, each write takes effect by itself.
// Errors: those of `work`; otherwise those of reading or writing the registry.
HRESULT AsOneRegistryChange(HRESULT (*work)()) noexcept;

}  // namespace mirolta
