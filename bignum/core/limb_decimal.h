// Limbs to decimal digits and back, in less than quadratic time.
#pragma once

#include "limb.h"

namespace mirolta {

// DecimalLimb: the most decimal digits of which all values fit a limb, and ten to that power.
inline constexpr uint32_t kDecimalDigits = kLimbBits == 64 ? 19 : 9;
inline constexpr Limb kDecimalPower =
    static_cast<Limb>(kLimbBits == 64 ? uint64_t{10000000000000000000u} : uint64_t{1000000000u});

// DecimalDigitsRoom returns a count of digits that holds every value of n limbs.
size_t DecimalDigitsRoom(size_t n) noexcept;

// DigitsFromLimbs writes x as exactly count digits '0' to '9', zeros in front.
// Shapes: x[n], destroyed; digits[count], count = DecimalDigitsRoom(n).
// Errors: false if memory runs out.
[[nodiscard]] bool DigitsFromLimbs(char* digits, Limb* x, size_t n) noexcept;

// LimbsFromDecimal: z := the value of chunks in base kDecimalPower, least significant first.
// Shapes: chunks[n], z[n]; z overlaps nothing. Errors: false if memory runs out.
[[nodiscard]] bool LimbsFromDecimal(Limb* z, const Limb* chunks, size_t n) noexcept;

}  // namespace mirolta
