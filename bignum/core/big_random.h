// Random numbers.
#pragma once

#include "big_int.h"

namespace mirolta {

// Random sets n to size random bytes from the current source, seeded once with the clock.
// ensure_size sets the two highest bits, so that the product of two such numbers has exactly twice
// the bits; odd sets the lowest. The sign flag is kept.
// Errors: E_INVALIDARG for size < 1; E_OUTOFMEMORY; E_FAIL if the source cannot be seeded. n is
//         unchanged.
HRESULT Random(BigInt& n, LONG size, bool ensure_size, bool odd) noexcept;

}  // namespace mirolta
