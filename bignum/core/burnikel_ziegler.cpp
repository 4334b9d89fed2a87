#include "burnikel_ziegler.h"

#include "limb_basics.h"
#include "multiply.h"
#include "schoolbook_division.h"

namespace mirolta {

namespace {

// The least quotient length for which BurnikelZieglerQuotient recurses; measured and estimated as
// kBurnikelZieglerLimbs.
constexpr size_t kQuotientLimbs = kLimbBits == 64 ? 64 : 128;

// SchoolbookDivide with the top n limbs of a below 2 d; returns the quotient's top limb, 0 or 1.
Limb SchoolbookDivideWithTop(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb v) {
  const Limb top = ReduceTop(a, m, d, n);
  SchoolbookDivide(q, a, m, d, n, v, false);
  return top;
}

// BurnikelZieglerDivide for count < n: divides by the divisor's top limbs, then subtracts the quotient times
// its low limbs. Inlined, so that each level of the recursion has one frame.
__attribute__((always_inline)) inline Limb DivideShort(Limb* q, Limb* a, const Limb* d, size_t n,
                                                       size_t count, Limb v, Limb* scratch) {
  if (count < kBurnikelZieglerLimbs) return SchoolbookDivideWithTop(q, a, n + count, d, n, v);
  const LimbKernels& k = CurrentLimbKernels();
  const size_t rest = n - count;
  Limb top = BurnikelZieglerDivide(q, a + rest, d + rest, count, count, v, scratch);
  MultiplyLimbs(scratch, q, count, d, rest, scratch + n);
  // At most 2, one from each subtraction, so that the quotient is corrected at most twice.
  Limb borrow = k.subtract(a, a, scratch, n);
  if (top != 0) borrow = static_cast<Limb>(borrow + k.subtract(a + count, a + count, d, rest));
  while (borrow != 0) {
    top = static_cast<Limb>(top - SubtractLimb(q, count, 1));
    borrow = static_cast<Limb>(borrow - k.add(a, a, d, n));
  }
  return top;
}

}  // namespace

Limb BurnikelZieglerDivide(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                           Limb* scratch) noexcept {
  if (count < kBurnikelZieglerLimbs) return SchoolbookDivideWithTop(q, a, n + count, d, n, v);
  // A quotient as long as the divisor is found in halves. After the first one the remainder is below d, so
  // the second has no top limb.
  const size_t low = count == n ? n / 2 : 0;
  const Limb top = DivideShort(q + low, a + low, d, n, count - low, v, scratch);
  if (low != 0) DivideShort(q, a, d, n, low, v, scratch);
  return top;
}

bool BurnikelZieglerQuotient(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                             Limb* scratch) noexcept {
  while (count >= kQuotientLimbs) {
    if (n > count) {
      // The limbs of d below its top count + 1 contribute less than B^(n - 1).
      const size_t omitted = n - count - 1;
      a += omitted;
      d += omitted;
      n -= omitted;
    }
    const size_t high = count / 2;
    count -= high;
    if (CompareLimbs(a + count + high, d, n) >= 0) return false;
    BurnikelZieglerDivide(q + count, a + count, d, n, high, v, scratch);
  }
  return SchoolbookDivide(q, a, n + count, d, n, v, true);
}

}  // namespace mirolta
