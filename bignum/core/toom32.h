// Toom-3/2 multiplication, for operands of unequal length.
#pragma once

#include "limb.h"

namespace mirolta {

// Toom32: z := x * y by four products: x is split in three, y in two, both are evaluated at 0, 1,
// -1 and infinity, and the product is interpolated.
// Shapes: x[m], y[n], z[m + n], scratch[MultiplyScratch(m, n)], 5/4 n <= m <= 9/5 n, n >= 12.
// Alias:  z and scratch overlap nothing.
// Time:   depends on m, n and the values.
// Source: Zimmermann and Quercia 2003; Bodrato 2007.
void Toom32(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n, Limb* scratch) noexcept;

}  // namespace mirolta
