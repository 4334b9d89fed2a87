// Limbs to decimal digits and back, in less than quadratic time.
#pragma once

#include "decimal_powers.h"

namespace mirolta {

// DecimalRoom returns a count of digits that holds every value of n limbs.
CheckedSize DecimalRoom(size_t n) noexcept;

// DecimalFromLimbs writes x as exactly count digits '0' to '9', zeros in front.
// Shapes: x[n], destroyed; digits[count], count = DecimalRoom(n).value().
// Errors: false if memory runs out.
[[nodiscard]] bool DecimalFromLimbs(char* digits, Limb* x, size_t n) noexcept;

// LimbsFromDecimal: z := the value of chunks in base kDecimalPower, least significant first.
// Shapes: chunks[n], z[n]; z overlaps nothing. Errors: false if memory runs out.
[[nodiscard]] bool LimbsFromDecimal(Limb* z, const Limb* chunks, size_t n) noexcept;

}  // namespace mirolta
