// Division by a reciprocal, for numbers whose products are transforms.
#pragma once

#include "middle_product.h"
#include "multiply.h"

namespace mirolta {

// With 32-bit limbs it would be the largest part of long division, which small builds do without.
inline constexpr bool kHasNewtonDivision = kHasTransforms && kLimbBits == 64;

// UsesNewtonDivision returns whether a division of count quotient limbs by n limbs is done so, which is where it is
// faster.
bool IsNewtonFaster(size_t n, size_t count) noexcept;
inline bool UsesNewtonDivision(size_t n, size_t count) {
  if constexpr (!kHasNewtonDivision) return false;
  return IsNewtonFaster(n, count);
}

// NewtonScratch returns the limbs of scratch of the divisions below, for up to count quotient limbs.
// Shapes: n >= 2, count >= 2.
CheckedSize NewtonScratch(size_t n, size_t count) noexcept;

// NewtonDivide: q := a / d, the lowest n limbs of a := a mod d; the rest of a is destroyed.
// Shapes: a[n + count], its top n limbs below d; d[n], its top bit set; q[count]; n >= 2, count >= 2;
//         scratch[NewtonScratch(n, count)].
// Alias:  none.
// Source: Newton's iteration; Knuth TAOCP 2, 4.3.3, algorithm R.
void NewtonDivide(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb* scratch) noexcept;

// NewtonQuotient: q := a / d, without the remainder; a is destroyed. Returns false, with q undefined, if q is
// undetermined by the truncated products, as where the division leaves no remainder.
// Shapes: as for NewtonDivide.
// Alias:  none.
[[nodiscard]] bool NewtonQuotient(Limb* q, Limb* a, const Limb* d, size_t n, size_t count,
                                  Limb* scratch) noexcept;

// NewtonReciprocal: z := B^(2n) / d, or less by at most 3.
// Shapes: d[n], its top bit set; z[n + 1]; n >= 2; scratch[NewtonReciprocalScratch(n)].
// Alias:  none.
void NewtonReciprocal(Limb* z, const Limb* d, size_t n, Limb* scratch) noexcept;
CheckedSize NewtonReciprocalScratch(size_t n) noexcept;

}  // namespace mirolta
