// Products of any length: by rows while short, then with fewer and fewer partial products.
#pragma once

#include "limb.h"

namespace mirolta {

// MultiplyScratch returns the limbs of working memory for a product of m by n limbs.
CheckedSize MultiplyScratch(size_t m, size_t n) noexcept;

// MultiplyLimbs: z := x * y.
// Shapes: x[m], y[n], z[m + n], scratch[MultiplyScratch(m, n)], m and n >= 1.
// Alias:  x may be y (a square costs less); z and scratch overlap nothing.
// Source: Karatsuba and Ofman 1962; Toom 1963 with Bodrato's order of interpolation.
void MultiplyLimbs(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n,
                   Limb* scratch) noexcept;

}  // namespace mirolta
