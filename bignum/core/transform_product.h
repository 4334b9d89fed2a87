// Multiplication by number-theoretic transforms.
#pragma once

#include "cyclic_ring.h"
#include "seam/small_stack.h"
#include "transform_kernels.h"

namespace mirolta {

// Where threads have little stack memory is short too: the transforms are left out.
inline constexpr bool kHasTransforms = !kSmallStack;

// FitsTransforms returns whether a product of m by n limbs is neither shorter nor longer than what
// TransformProduct computes: 2^7 to almost 2^23 coefficients of 64 bits.
bool FitsTransforms(size_t m, size_t n) noexcept;

// TransformScratch returns the limbs of scratch of a product of m by n limbs, or of the longest one if
// that is too long; it grows with m and n.
// Shapes: m + n >= 2^7 coefficients.
CheckedSize TransformScratch(size_t m, size_t n) noexcept;

// TransformProduct: z := x * y by transforms modulo three primes and the Chinese remainder theorem.
// Shapes: x[m], y[n], z[m + n], scratch[TransformScratch(m, n)], FitsTransforms(m, n).
// Alias:  x may be y, and a square costs less; z and scratch overlap nothing.
// Time:   depends on m and n only.
// Source: Pollard, The fast Fourier transform in a finite field, 1971.
void TransformProduct(const TransformKernels& kernels, Limb* z, const Limb* x, size_t m,
                      const Limb* y, size_t n, Limb* scratch) noexcept;

// SumOfProducts: z := u x + v y for a pair x, y.
struct SumOfProducts {
  Limb* z;
  const Limb* u;
  const Limb* v;
};

// FitsTransformSums returns whether TransformSums computes sums of products of m by n limbs.
bool FitsTransformSums(size_t m, size_t n) noexcept;
// TransformSumsScratch returns the limbs of scratch of so many sums, or of the longest ones if they are too long.
CheckedSize TransformSumsScratch(size_t count, size_t m, size_t n) noexcept;

// TransformSums computes one or two sums of a pair: each operand is transformed once, each sum transformed back once.
// Shapes: sums[count], count 1 or 2, with u[m], v[m], z[m + n + 1]; x[n], y[n];
//         scratch[TransformSumsScratch(count, m, n)]; FitsTransformSums(m, n).
// Alias:  z and scratch overlap nothing.
// Time:   depends on count, m and n only.
void TransformSums(const TransformKernels& kernels, const SumOfProducts* sums, size_t count,
                   size_t m, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept;

// FitsCyclicProduct returns whether the coefficients of such a product fit the primes.
// Shapes: as for CyclicProduct.
bool FitsCyclicProduct(size_t m, size_t n, const CyclicRing& ring) noexcept;
CheckedSize CyclicScratch(const CyclicRing& ring) noexcept;

// CyclicProduct: z := x * y in the ring, by transforms of the ring's length. For 64-bit limbs.
// Shapes: ring.n a power of two, at least kLeastBlocks blocks; x[m], y[n], 1 <= n <= m; z[ring.n + 1];
//         scratch[CyclicScratch(ring)]; FitsCyclicProduct(m, n, ring).
// Alias:  z and scratch overlap nothing.
// Time:   depends on m, n and the ring only, but for carries of the result.
void CyclicProduct(const TransformKernels& kernels, Limb* z, const CyclicRing& ring, const Limb* x,
                   size_t m, const Limb* y, size_t n, Limb* scratch) noexcept;

}  // namespace mirolta
