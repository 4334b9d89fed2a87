// Products whose upper limbs are known.
#pragma once

#include "transform_product.h"

namespace mirolta {

// MiddleProductScratch returns the limbs of scratch of SubtractProduct; it grows with m and n.
CheckedSize MiddleProductScratch(const TransformKernels& kernels, size_t count, size_t m,
                                 size_t n) noexcept;

// SubtractProduct: z := a - x * y, which is at least 0 and below B^count. So only the lowest limbs of the product
// matter; it is computed modulo a number of little more than B^count, by cyclic convolutions of about that length.
// Where a divisor is x and an approximate reciprocal y, the difference's upper limbs are a middle product.
// Shapes: a[length], length >= count; x[m], y[n], 1 <= n <= m, count <= m + n; z[count];
//         scratch[MiddleProductScratch(kernels, count, m, n)].
// Alias:  z may be a; scratch overlaps nothing.
// Source: Hanrot, Quercia and Zimmermann, The middle product algorithm I, 2004; Brent and Zimmermann, Modern
//         computer arithmetic, 2010, 3.3.2: the wrap-around trick.
void SubtractProduct(const TransformKernels& kernels, Limb* z, size_t count, const Limb* a,
                     size_t length, const Limb* x, size_t m, const Limb* y, size_t n,
                     Limb* scratch) noexcept;

}  // namespace mirolta
