// Schoolbook products in radix 2^28, by vectors of 64-bit sums of products, for 32-bit x86. Digits are radix-2^28
// digits here.
#pragma once

#include <utility>

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86_32)

namespace mirolta {

// A digit as it is stored, and in a lane of a vector.
using Digit28 = uint32_t;
using DigitLane28 = uint64_t;

inline constexpr uint32_t kRadix28Bits = 28;
inline constexpr Digit28 kRadix28Mask = (Digit28{1} << kRadix28Bits) - 1;
// A group of limbs has as many bits as a group of digits: the digits' borders are the same in each.
inline constexpr size_t kGroupLimbs = 7;
inline constexpr size_t kGroupDigits = 8;
static_assert(kGroupLimbs * kLimbBits == kGroupDigits * kRadix28Bits);
// The longest operands of products. The sums of twice as many products stay below 2^64.
inline constexpr size_t kRadix28MostLimbs = 15 * kGroupLimbs;
inline constexpr size_t kRadix28MostDigits = 15 * kGroupDigits;

// ToRadix28: z := x, in whole groups. Returns the digits.
// Shapes: x[n], z[n / kGroupLimbs, rounded up, groups].
size_t ToRadix28(Digit28* z, const Limb* x, size_t n);
size_t ToRadix28(DigitLane28* z, const Limb* x, size_t n);

// FromRadix28Group: z := a group of digits.
// Shapes: digits[kGroupDigits], below 2^28; z[kGroupLimbs].
template <size_t... kLimb>
inline __attribute__((always_inline)) void FromRadix28Group(Limb* z, const Digit28* digits,
                                                            std::index_sequence<kLimb...>) {
  ((z[kLimb] = digits[kLimb] >> (4 * kLimb) | digits[kLimb + 1] << (kRadix28Bits - 4 * kLimb)),
   ...);
}

// z := x * y.
// Shapes: x[m], y[n], z[m + n], m and n from 1 to kRadix28MostLimbs.
// Alias:  any.
// Time:   depends on the counts only.
// Source: Comba 1990; Gueron and Krasnov, Software implementation of modular exponentiation, using advanced vector
//         instructions architectures, 2012.
void MultiplyRadix28Avx2(Limb* z, const Limb* x, size_t m, const Limb* y,
                         size_t n);  // needs kFeatureAvx2
void MultiplyRadix28Sse2(Limb* z, const Limb* x, size_t m, const Limb* y,
                         size_t n);  // needs kFeatureSse2

}  // namespace mirolta

#endif
