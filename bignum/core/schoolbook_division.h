// Schoolbook division.
#pragma once

#include "limb_basics.h"
#include "reciprocal.h"

namespace mirolta {

// Up to this length a masked subtraction of the divisor is faster than an unpredictable branch.
inline constexpr size_t kMaskedSubtractLimbs = 8;

// ReduceTop subtracts d from the top n limbs of a unless they are less; returns how often, 0 or 1.
// Shapes: a[m], d[n], m >= n.
inline Limb ReduceTop(Limb* a, size_t m, const Limb* d, size_t n) {
  Limb* const top = a + m - n;
  const bool subtracts = CompareLimbs(top, d, n) >= 0;
  if (n > kMaskedSubtractLimbs) {
    if (subtracts) CurrentLimbKernels().subtract(top, top, d, n);
  } else {
    const Limb mask = MaskIf(subtracts);
    Limb borrow = 0;
    for (size_t i = 0; i < n; ++i) {
      const DoubleLimb t = static_cast<DoubleLimb>(top[i]) - (d[i] & mask) - borrow;
      top[i] = static_cast<Limb>(t);
      borrow = static_cast<Limb>(t >> (2 * kLimbBits - 1));
    }
  }
  return subtracts;
}

// SchoolbookDivide: q := a / d, the lowest n limbs of a := a mod d.
//
// If it truncates, the step of quotient limb j omits the limbs of d below its top j + 2, and a[0] to
// a[n - 3] are not read. Of the remainder only a[n - 2] and a[n - 1] are set then; the value is too
// large by the omitted products, less than (m - n) * B^(n - 1). Returns false where a quotient limb is
// undetermined by the truncated product, true otherwise.
// Shapes: a[m], its top n limbs below d; d[n], its top bit set; q[m - n], m >= n >= 2; reciprocal
//         is Reciprocal3By2(d[n - 1], d[n - 2]).
// Alias:  none.
// Source: Knuth TAOCP 2, 4.3.1, algorithm D; Moeller and Granlund 2011 for the quotient limbs.
bool SchoolbookDivide(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb reciprocal,
                      bool truncates) noexcept;

}  // namespace mirolta
