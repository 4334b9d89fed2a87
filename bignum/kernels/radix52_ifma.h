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

// The processor features of these products.
inline constexpr uint32_t kRadix52Features = kFeatureBmi2Adx | kFeatureAvx512 | kFeatureAvx512Ifma;

  // Where there are registers enough, the products take two digits a step, by another multiple.
  #if MIROLTA_KERNELS_FOR(X86_64)
inline constexpr size_t kRadix52Multiples = 2;
  #else
inline constexpr size_t kRadix52Multiples = 1;
  #endif

// Radix52Modulus: an odd modulus as the products take it. It owns nothing.
// Source: Orup, Simplifying quotient determination in high-radix modular multiplication, 1995, for the
//         multiples.
struct Radix52Modulus {
  const Digit52* m;
  // [i] is (m * i + 1) / base at most m, for i = -1 / m mod base and base 2^52 and 2^104.
  const Digit52* multiple[kRadix52Multiples];
  Digit52 inverse;  // -1 / m mod 2^52
};

// Radix52Product: z := x * y / 2^(52 count) mod m, below 3 m (almost Montgomery multiplication); below
// 2 m for y = 1.
// Shapes: x, y, z, m are whole vectors of eight radix-2^52 digits, zero above count; x < 3 m,
//         y < 3 m, 2^kRadix52Spare m <= 2^(52 count), count >= 1.
// Alias:  z, x and y may be the same; some counts have squares of their own, for x that is y.
// Time:   depends on count and on whether x is y only.
// Source: Gueron and Krasnov, Accelerating big integer arithmetic using Intel IFMA extensions,
//         2016.
using Radix52Product = void (*)(Digit52* z, const Digit52* x, const Digit52* y,
                                const Radix52Modulus& modulus, size_t count);
inline constexpr size_t kRadix52Spare = 4;

// Radix52Vectors returns the vectors of numbers of that many radix-2^52 digits.
inline constexpr size_t Radix52Vectors(size_t count) {
  return (count + kRadix52PerVector - 1) / kRadix52PerVector;
}

// Radix52ProductFor returns the product of numbers of that many vectors, 1 to kRadix52MostVectors.
inline constexpr size_t kRadix52MostVectors = 40;
Radix52Product Radix52ProductFor(size_t vectors) noexcept;

// Radix52PairProduct: two products by Radix52Product's rules, interleaved, each with its own modulus.
// The second's operands follow the first's.
// Shapes: x, y, z are 2 * vectors whole vectors.
using Radix52PairProduct = void (*)(Digit52* z, const Digit52* x, const Digit52* y,
                                    const Radix52Modulus (&moduli)[2], size_t count);

// Radix52PairProductFor returns that of numbers of 1 to kRadix52MostPairVectors vectors.
inline constexpr size_t kRadix52MostPairVectors = 5;
Radix52PairProduct Radix52PairProductFor(size_t vectors) noexcept;

// Radix52Select: z := entry `index` of a table of `entries`, each n digits, `stride` digits apart.
// Shapes: n is a multiple of kRadix52PerVector, entries is even.
// Time:   depends on the counts only: every entry is read.
void Radix52Select(Digit52* z, const Digit52* table, size_t entries, size_t stride, size_t n,
                   Digit52 index) noexcept;

}  // namespace mirolta

#endif
