// Random numbers.
#pragma once

#include "big_int.h"

namespace mirolta {

// Random makes n a number of size random bytes, from the current source seeded once with the clock.
// ensure_size sets the two highest bits, so that a product of two such numbers has twice the bits;
// odd sets the lowest. The sign's flag stays.
// Errors: E_INVALIDARG for a size below 1, E_OUTOFMEMORY, E_FAIL if the source cannot be seeded;
//         n unchanged.
HRESULT Random(BigInt& n, LONG size, bool ensure_size, bool odd) noexcept;

}  // namespace mirolta
