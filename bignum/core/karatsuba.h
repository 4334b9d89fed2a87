// Karatsuba's multiplication.
#pragma once

#include "limb.h"

namespace mirolta {

// Karatsuba: z := x * y by three products of half the length. With x = x1 B^h + x0,
// y = y1 B^h + y0, z0 = x0 y0 and z2 = x1 y1, the middle product is z0 + z2 - (x0 - x1)(y0 - y1).
// Shapes: x[n], y[n], z[2n], scratch[BalancedScratch(n)], n >= 4.
// Alias:  x may be y; z and scratch overlap nothing.
// Time:   depends on n and the values.
// Source: Karatsuba and Ofman 1962.
void Karatsuba(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept;

}  // namespace mirolta
