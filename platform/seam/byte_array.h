// New byte arrays for results.
#pragma once

#include <cstdint>

#include "system_headers.h"

namespace mirolta {

// CreateByteArray makes an array of VT_UI1 with one dimension of count elements from 0 on. The
// caller writes them all before anyone else sees the array: clearing them first would double the
// cost of a large result, so it is left out where the platform allows that.
// Returns: null if memory is short.
SAFEARRAY* CreateByteArray(uint32_t count) noexcept;

}  // namespace mirolta
