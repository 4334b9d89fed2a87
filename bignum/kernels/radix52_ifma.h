// Montgomery multiplication in radix 2^52, by AVX-512 IFMA.
#pragma once

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

// A radix-2^52 digit as it is stored, in a lane of a vector.
using Digit52 = uint64_t;

inline constexpr uint32_t kRadix52Bits = 52;
inline constexpr Digit52 kRadix52Mask = (Digit52{1} << kRadix52Bits) - 1;
inline constexpr size_t kRadix52PerVector = 8;

// The processor features of these products, which use mulx too in 64-bit mode.
inline constexpr uint32_t kRadix52Features = kFeatureBmi2Adx | kFeatureAvx512 | kFeatureAvx512Ifma;

// Radix52Product: z := x * y / 2^(52 count) mod m, below 2 m (almost Montgomery multiplication).
// Shapes: x, y, z, m are whole vectors of eight radix-2^52 digits, zero above count; x < 2 m,
//         y < 2 m, m odd, 4 m <= 2^(52 count), count >= 2; inverse is 2^12 * (-1 / m mod 2^52).
// Alias:  z, x and y may be the same.
// Time:   depends on count only.
// Source: Gueron and Krasnov, Accelerating big integer arithmetic using Intel IFMA extensions,
//         2016.
using Radix52Product = void (*)(Digit52* z, const Digit52* x, const Digit52* y, const Digit52* m,
                                size_t count, Digit52 inverse);

// Radix52ProductFor returns the product of numbers of that many vectors, 1 to kRadix52MostVectors.
inline constexpr size_t kRadix52MostVectors = 10;
Radix52Product Radix52ProductFor(size_t vectors) noexcept;

// Radix52PairProduct: two products by Radix52Product's rules, interleaved, each with its own modulus
// and inverse. The second's operands follow the first's.
// Shapes: x, y, z, m are 2 * vectors whole vectors, terms is 6 * vectors vectors, aligned to
//         64 bytes; the caller wipes it.
inline constexpr size_t kRadix52PairTerms = 6;
using Radix52PairProduct = void (*)(Digit52* z, const Digit52* x, const Digit52* y,
                                    const Digit52* m, size_t count, const Digit52 (&inverses)[2],
                                    Digit52* terms);

// Radix52PairProductFor returns that of numbers of 1 to kRadix52MostPairVectors vectors.
inline constexpr size_t kRadix52MostPairVectors = 5;
Radix52PairProduct Radix52PairProductFor(size_t vectors) noexcept;

// Radix52Select: z := entry `index` of a table of `entries`, each n digits, `stride` digits apart.
// Shapes: n is a multiple of kRadix52PerVector.
// Time:   depends on the counts only: every entry is read.
void Radix52Select(Digit52* z, const Digit52* table, size_t entries, size_t stride, size_t n,
                   Digit52 index) noexcept;

}  // namespace mirolta

#endif
