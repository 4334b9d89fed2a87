// Numbers as digits of 52 bits, a digit in a limb, and their products in Montgomery's form by the
// instructions of AVX-512 IFMA.
#pragma once

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

inline constexpr uint32_t kRadix52Bits = 52;
inline constexpr Limb kRadix52Mask = (Limb{1} << kRadix52Bits) - 1;
inline constexpr size_t kRadix52PerVector = 8;

// What the products here need of the processor: mulx too.
inline constexpr uint32_t kRadix52Features = kFeatureBmi2Adx | kFeatureAvx512 | kFeatureAvx512Ifma;

// Radix52Product: z := x * y / 2^(52 count), some value of the residue class of m below 2 m.
// Shapes: x, y, z, m of as many vectors of eight digits as the function is for, zeros above count;
//         x and y below 2 m, 4 m <= 2^(52 count), m odd, count >= 2.
//         inverse is -1 / m mod 2^52, times 2^12.
// Alias:  any of z, x, y may be the same.
// Time:   depends on count only.
// Source: Gueron and Krasnov, Accelerating big integer arithmetic using Intel IFMA extensions,
// 2016.
using Radix52Product = void (*)(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t count,
                                Limb inverse);

// Radix52ProductFor returns the product for that many vectors, 1 to kRadix52MostVectors.
inline constexpr size_t kRadix52MostVectors = 10;
Radix52Product Radix52ProductFor(size_t vectors) noexcept;

}  // namespace mirolta

#endif
