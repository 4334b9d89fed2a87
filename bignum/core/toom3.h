// One level of the products that split their operands.
#pragma once

#include "limb.h"

namespace mirolta {

// MultiplyBalanced: z := x * y with operands of equal length; the level above is chosen by n.
// Shapes: x[n], y[n], z[2n], scratch[BalancedScratch(n)], n >= 1. x may be y.
void MultiplyBalanced(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept;

// Toom32: z := x * y of unequal length, by products of about a third of x by half of y.
// Shapes: x[m], y[n], z[m + n], scratch[MultiplyScratch(m, n)], 5/4 n <= m <= 9/5 n, n >= 12.
// Alias:  z and scratch overlap nothing.
// Source: Zimmermann and Quercia 2003; Bodrato 2007.
void Toom32(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n,
                        Limb* scratch) noexcept;

// BalancedScratch returns the limbs of working memory for MultiplyBalanced.
// Karatsuba takes 2h + 2 a level for halves h = (n + 1) / 2, Toom-3 6k + 6 for thirds; both sum to
// less than 4n plus a few limbs a level, and there are at most 64 levels.
inline CheckedSize BalancedScratch(size_t n) noexcept {
  return 4 * CheckedSize(n) + 64 * 8;
}

}  // namespace mirolta
