// Toom-3 multiplication.
#pragma once

#include "limb.h"

namespace mirolta {

// Toom3: z := x * y by five products of a third of the length: both operands are split in three,
// evaluated at 0, 1, -1, 2 and infinity, and the product is interpolated.
// Shapes: x[n], y[n], z[2n], scratch[BalancedScratch(n)], n >= 9.
// Alias:  x may be y; z and scratch overlap nothing.
// Time:   depends on n and the values.
// Source: Toom 1963; interpolation sequence of Bodrato 2007.
void Toom3(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept;

}  // namespace mirolta
