// Half of Euclid's algorithm, found from the upper halves of the numbers.
#pragma once

#include "matrix_product.h"
#include "seam/small_stack.h"

namespace mirolta {

// Where threads have little stack memory is short too: half of the algorithm is left out.
inline constexpr bool kHasHalfGcd = !kSmallStack;

// HalfGcdLengths: the least lengths for which it is faster.
struct HalfGcdLengths {
  size_t recursion;  // of HalfGcd itself, at least kLeastHalfGcd
  size_t gcd;        // of numbers whose greatest common divisor is computed
  size_t cofactor;   // with the cofactor
};
inline constexpr size_t kLeastHalfGcd = 8;
// Measured for 64-bit limbs with mulx and adx, estimated for 32-bit limbs.
inline constexpr HalfGcdLengths kHalfGcdLengths =
    kLimbBits == 64 ? HalfGcdLengths{80, 220, 180} : HalfGcdLengths{160, 440, 360};
static_assert(kHalfGcdLengths.recursion >= kLeastHalfGcd);

// HalfGcdEntry returns the limbs of an entry of the matrix that HalfGcd makes from n limbs.
// Shapes: n >= 4.
inline size_t HalfGcdEntry(size_t n) {
  return n - n / 2;
}

// HalfGcdScratch returns the limbs of scratch of HalfGcd and, with matrices of its n limbs, of
// JoinLowLimbs for numbers with up to `low` limbs below.
CheckedSize HalfGcdScratch(size_t n, size_t low, size_t least,
                           PairSums sums = PairSums::kTogether) noexcept;

// HalfGcd takes Euclid's steps from x, y while the remainder and its difference from the last one are at
// least B^s, s = n / 2 + 1, or ends some steps before that. The same steps are Euclid's for numbers
// whose upper limbs are x and y. Returns the limbs of the new x; x and y become the new pair, zero
// above. From `least` limbs on it recurses.
// Shapes: x[n], y[n], y <= x, x[n - 1] != 0, least >= n >= 4 or n >= least >= kLeastHalfGcd; entries of
//         HalfGcdEntry(n) limbs; scratch[HalfGcdScratch(n, 0, least)].
// Time:   depends on the values.
// Source: Schoenhage 1971; Moeller, On Schoenhage's algorithm and subquadratic integer gcd
//         computation, 2008.
size_t HalfGcd(Limb* x, Limb* y, size_t n, EuclidMatrix* matrix, Limb* scratch,
               size_t least) noexcept;

// JoinLowLimbs takes the steps of a HalfGcd for the limbs below: it was called with x + low, y + low,
// and left the upper n limbs. Returns the limbs of the new x.
// Shapes: x[low + n], y[low + n], low >= 1, and one more limb if a sum needs it, which the numbers before
//         the steps had; scratch as HalfGcdScratch counts it for the same sums.
size_t JoinLowLimbs(const EuclidMatrix& matrix, Limb* x, Limb* y, size_t low, size_t n,
                    Limb* scratch, PairSums sums = PairSums::kTogether) noexcept;

}  // namespace mirolta
