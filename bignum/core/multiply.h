// Multiplication: the method is chosen by the operands' lengths.
#pragma once

#include <bit>

#include "limb.h"

namespace mirolta {

// MultiplyScratch returns the limbs of scratch of a product of m by n limbs.
CheckedSize MultiplyScratch(size_t m, size_t n) noexcept;

// MultiplyLimbs: z := x * y, by the schoolbook method, Karatsuba's, Toom-3, Toom-3/2 or transforms.
// Shapes: x[m], y[n], z[m + n], scratch[MultiplyScratch(m, n)], m >= 1, n >= 1.
// Alias:  x may be y, and a square costs less; z and scratch overlap nothing.
// Time:   depends on m and n, and on the values where neither is short.
void MultiplyLimbs(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n,
                   Limb* scratch) noexcept;

// BalancedScratch returns the limbs of scratch of MultiplyBalanced without transforms. Karatsuba takes 2h + 2 a level
// for halves of h = (n + 1) / 2 limbs, Toom-3 6k + 6 for thirds: less than 4n and eight limbs a
// level in all, with fewer levels than n has bits.
inline CheckedSize BalancedScratch(size_t n) noexcept {
  const auto levels = static_cast<size_t>(std::bit_width(n));
  return 4 * CheckedSize(n) + 8 * CheckedSize(levels);
}

// MultiplyBalanced: z := x * y for operands of equal length.
// Shapes: x[n], y[n], z[2n], n >= 1; scratch[BalancedScratch(n)], and what transforms of up to n by n
//         limbs take, as MultiplyScratch adds it.
// Alias:  x may be y, and a square costs less; z and scratch overlap nothing.
void MultiplyBalanced(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept;

}  // namespace mirolta
