#include "divide.h"

#include "burnikel_ziegler.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"
#include "newton_division.h"
#include "schoolbook_division.h"

namespace mirolta {

CheckedSize DivideScratch(size_t m, size_t n) noexcept {
  const bool recurses = m - n + 1 >= kBurnikelZieglerLimbs && n >= kBurnikelZieglerLimbs;
  if (!recurses) return SizeConstant(0);
  const CheckedSize recursive = BurnikelZieglerScratch(n, m - n + 1);
  if (!UsesNewtonDivision(n, m - n + 1)) return recursive;
  return LargerOf(recursive, NewtonScratch(n, m - n + 1));
}

namespace {

// NormalisedDivision: a division whose operands are shifted so that the divisor's top bit is set.
struct NormalisedDivision {
  uint32_t shift;
  size_t count;     // quotient limbs still to find; the top n limbs of u[n + count] are below v
  Limb reciprocal;  // Reciprocal3By2 of v's top two limbs
};

// BeginDivision shifts both operands, but for the lowest `unused` limbs of u, and finds the quotient limb
// above the others where there is one.
// Shapes: as for DivideInPlace, n >= 2, unused <= m - n.
__attribute__((always_inline)) inline NormalisedDivision BeginDivision(Limb* q, Limb* u, size_t m,
                                                                       Limb* v, size_t n,
                                                                       size_t unused) {
  const uint32_t shift = LeadingZeros(v[n - 1]);
  u[m] = 0;
  if (shift != 0) {
    ShiftLeftLimbs(v, v, n, shift);
    u[m] = ShiftLeftLimbs(u + unused, u + unused, m - unused, shift);
  }
  size_t count = m - n + 1;
  // A limb shifted out is less than v's top limb. Without one the top n limbs are less than 2 v.
  if (u[m] == 0) q[--count] = ReduceTop(u, m, v, n);
  return {shift, count, Reciprocal3By2(v[n - 1], v[n - 2])};
}

}  // namespace

void DivideInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept {
  if (n == 1) {
    u[0] = DivideByLimb(q, u, m, PrepareDivisor(v[0]));
    return;
  }
  const NormalisedDivision division = BeginDivision(q, u, m, v, n, 0);
  size_t count = division.count;
  if (count < kBurnikelZieglerLimbs || n < kBurnikelZieglerLimbs) {
    SchoolbookDivide(q, u, n + count, v, n, division.reciprocal, false);
  } else if (UsesNewtonDivision(n, count)) {
    NewtonDivide(q, u, v, n, count, scratch);
  } else {
    // Blocks of n quotient limbs, the top one shorter. Each leaves a remainder below v.
    while (count != 0) {
      const size_t block = count % n != 0 ? count % n : n;
      count -= block;
      BurnikelZieglerDivide(q + count, u + count, v, n, block, division.reciprocal, scratch);
    }
  }
  if (division.shift != 0) ShiftRightLimbs(u, u, n, division.shift);
}

bool QuotientInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept {
  if (n == 1) {
    DivideByLimb(q, u, m, PrepareDivisor(v[0]));
    return true;
  }
  // The schoolbook method takes u from limb n - 2 on, into which limb n - 3 is shifted. The quotient limb above the
  // others takes the top n limbs.
  const size_t below = m - n < n - 2 ? m - n : n - 3;
  const size_t unused = n < 3 || n >= kBurnikelZieglerLimbs ? 0 : below;
  const NormalisedDivision division = BeginDivision(q, u, m, v, n, unused);
  size_t count = division.count;
  if (UsesNewtonDivision(n, count)) return NewtonQuotient(q, u, v, n, count, scratch);
  if (n < kBurnikelZieglerLimbs) {
    if (!SchoolbookDivide(q, u, n + count, v, n, division.reciprocal, true)) return false;
  } else {
    while (count > n) {
      const size_t block = count % n != 0 ? count % n : n;
      count -= block;
      BurnikelZieglerDivide(q + count, u + count, v, n, block, division.reciprocal, scratch);
    }
    if (!BurnikelZieglerQuotient(q, u, v, n, count, division.reciprocal, scratch)) return false;
  }
  // The computed remainder is below v and too large by less than count * B^(n - 1). If it is at
  // least that, the true one is not negative and the quotient is exact.
  return u[n - 1] >= count;
}

bool DivideLimbs(Limb* q, Limb* r, const Limb* a, size_t m, const Limb* d, size_t n) noexcept {
  if (n == 1) {
    const LimbDivisor divisor = PrepareDivisor(d[0]);
    const Limb remainder = q != nullptr ? DivideByLimb(q, a, m, divisor) : ModLimb(a, m, divisor);
    if (r != nullptr) r[0] = remainder;
    return true;
  }
  const size_t count = m - n + 1;  // quotient limbs
  LimbScratch memory(CheckedSize(m) + 1 + CheckedSize(n) + CheckedSize(count) +
                     DivideScratch(m, n));
  if (memory.Get() == nullptr) return false;
  Limb* const u = memory.Get();
  Limb* const v = u + m + 1;
  Limb* const quotient = v + n;
  CopyLimbs(u, a, m);
  CopyLimbs(v, d, n);
  bool divided = false;
  if (r == nullptr) {
    divided = QuotientInPlace(quotient, u, m, v, n, quotient + count);
    if (!divided) {
      CopyLimbs(u, a, m);
      CopyLimbs(v, d, n);
    }
  }
  if (!divided) DivideInPlace(quotient, u, m, v, n, quotient + count);
  if (q != nullptr) CopyLimbs(q, quotient, count);
  if (r != nullptr) CopyLimbs(r, u, n);
  return true;
}

}  // namespace mirolta
