// Decimal conversion of limbs, in subquadratic time.
#pragma once

#include "decimal_powers.h"

namespace mirolta {

// DecimalRoom returns a number of digits that holds every value of n limbs.
CheckedSize DecimalRoom(size_t n) noexcept;

// DecimalFromLimbs writes x as exactly count digits '0' to '9', with leading zeros.
// Shapes: x[n], destroyed; digits[count], count = DecimalRoom(n).Value().
// Alias:  none.
// Errors: false if memory runs out.
// Time:   depends on n and the value.
// Source: Brent and Zimmermann, Modern Computer Arithmetic, 1.7.2; Knuth TAOCP 2, 4.4.
[[nodiscard]] bool DecimalFromLimbs(char* digits, Limb* x, size_t n) noexcept;

// LimbsFromDecimal: z := the value of chunks in base kDecimalPower, least significant first.
// Shapes: chunks[n], z[n].
// Alias:  none.
// Errors: false if memory runs out.
// Time:   depends on n.
// Source: Brent and Zimmermann, Modern Computer Arithmetic, 1.7.2.
[[nodiscard]] bool LimbsFromDecimal(Limb* z, const Limb* chunks, size_t n) noexcept;

}  // namespace mirolta
