#include "divide.h"

#include "limb_basics.h"
#include "schoolbook_division.h"
#include "multiply.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

// Below, division by rows is as fast as by halves: measured for 64-bit limbs, estimated for 32-bit
// limbs.
constexpr size_t kBurnikelZieglerLimbs = kLimbBits == 64 ? 32 : 64;
constexpr size_t kBurnikelZieglerQuotientLimbs = kLimbBits == 64 ? 64 : 128;
// Up to here, taking away a divisor or nothing is faster than a branch that is as good as random.
constexpr size_t kMaskedSubtractLimbs = 8;

Limb Reciprocal(Limb d) {
  return DivideWide(static_cast<Limb>(~d), kLimbMax, d);
}

// All bits set if it holds, else none: for corrections whose branch would be as good as random.
inline Limb MaskIf(bool holds) {
  return static_cast<Limb>(Limb{0} - static_cast<Limb>(holds));
}

// Reciprocal of a two-limb divisor: floor((B^3 - 1) / (d1 B + d0)) - B.
Limb Reciprocal2(Limb d1, Limb d0) {
  Limb v = Reciprocal(d1);
  Limb p = static_cast<Limb>(d1 * v + d0);
  const Limb over = MaskIf(p < d0);
  const Limb twice = over & MaskIf(p >= d1);
  v = static_cast<Limb>(v + over + twice);
  p = static_cast<Limb>(p - (d1 & over) - (d1 & twice));
  const LimbPair t = Product(v, d0);
  p = static_cast<Limb>(p + t.high);
  const Limb low_over = MaskIf(p < t.high);
  const Limb low_twice = low_over & (MaskIf(p > d1) | (MaskIf(p == d1) & MaskIf(t.low >= d0)));
  return static_cast<Limb>(v + low_over + low_twice);
}

// Quotient of (high, low) by the normalised divisor, high below it; the remainder replaces high.
inline Limb QuotientLimb(Limb* high, Limb low, Limb d, Limb v) {
  const LimbPair p = Product(v, *high);
  const Limb q0 = static_cast<Limb>(p.low + low);
  Limb q = static_cast<Limb>(p.high + *high + (q0 < low) + 1);
  Limb r = static_cast<Limb>(low - q * d);
  // Half of all times, so it is no branch; the next correction is rare.
  const Limb over = MaskIf(r > q0);
  q = static_cast<Limb>(q + over);
  r = static_cast<Limb>(r + (d & over));
  if (r >= d) {
    ++q;
    r = static_cast<Limb>(r - d);
  }
  *high = r;
  return q;
}

// Makes the top n limbs of a[m], below 2 d, less than d; returns how often d went into them.
inline Limb ReduceTop(Limb* a, size_t m, const Limb* d, size_t n) {
  Limb* const top = a + m - n;
  const bool goes = CompareLimbs(top, d, n) >= 0;
  if (n > kMaskedSubtractLimbs) {
    if (goes) CurrentLimbKernels().subtract(top, top, d, n);
  } else {
    const Limb mask = MaskIf(goes);
    Limb borrow = 0;
    for (size_t i = 0; i < n; ++i) {
      const DoubleLimb t = static_cast<DoubleLimb>(top[i]) - (d[i] & mask) - borrow;
      top[i] = static_cast<Limb>(t);
      borrow = static_cast<Limb>(t >> (2 * kLimbBits - 1));
    }
  }
  return goes;
}

// Divides by rows: a[m] becomes the remainder in a[n], q[m - n] the quotient's low limbs; returns
// its top limb, 0 or 1. d[n] has its top bit set, n >= 2, v is the reciprocal of its top two limbs.
Limb SchoolbookDivideWithTop(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb v) {
  const Limb top = ReduceTop(a, m, d, n);
  SchoolbookDivide(q, a, m, d, n, v, false);
  return top;
}

// Divides a[n + count] by d[n] for count <= n quotient limbs, as SchoolbookDivideWithTop does; the top n limbs
// of a are below 2d. scratch has n limbs and the working memory of a product.
Limb BurnikelZieglerDivide(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                    Limb* scratch) {
  if (count < kBurnikelZieglerLimbs) return SchoolbookDivideWithTop(q, a, n + count, d, n, v);
  const LimbKernels& k = CurrentLimbKernels();
  if (count == n) {
    const size_t low = n / 2;
    const Limb top = BurnikelZieglerDivide(q + low, a + low, d, n, n - low, v, scratch);
    // The remainder so far is below d, so the second half has no top limb.
    BurnikelZieglerDivide(q, a, d, n, low, v, scratch);
    return top;
  }
  // Divide by the divisor's top limbs, then take away what its low limbs contribute.
  const size_t rest = n - count;
  Limb top = BurnikelZieglerDivide(q, a + rest, d + rest, count, count, v, scratch);
  MultiplyLimbs(scratch, q, count, d, rest, scratch + n);
  Limb missing = k.subtract(a, a, scratch, n);
  if (top != 0) missing = static_cast<Limb>(missing + k.subtract(a + count, a + count, d, rest));
  while (missing != 0) {
    top = static_cast<Limb>(top - SubtractLimb(q, count, 1));
    missing = static_cast<Limb>(missing - k.add(a, a, d, n));
  }
  return top;
}

// The quotient alone, q[count] of a[n + count] by d[n], count <= n, the top n limbs of a below d.
// The remainder's upper limbs become those that a truncating SchoolbookDivide gives for all of count;
// false if it gives up. scratch is that of BurnikelZieglerDivide.
bool BurnikelZieglerQuotient(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                      Limb* scratch) {
  while (count >= kBurnikelZieglerQuotientLimbs) {
    if (n > count + 1) {
      // What stands under the top count + 1 limbs of d counts for less than B^(n - 1) here.
      const size_t left_out = n - count - 1;
      a += left_out;
      d += left_out;
      n -= left_out;
    }
    const size_t high = count / 2;
    count -= high;
    if (CompareLimbs(a + count + high, d, n) >= 0) return false;
    BurnikelZieglerDivide(q + count, a + count, d, n, high, v, scratch);
  }
  return SchoolbookDivide(q, a, n + count, d, n, v, true);
}

}  // namespace

LimbDivisor PrepareDivisor(Limb d) noexcept {
  const uint32_t shift = LeadingZeros(d);
  const Limb normalised = static_cast<Limb>(d << shift);
  return {normalised, Reciprocal(normalised), shift};
}

Limb DivideByLimb(Limb* q, const Limb* a, size_t n, const LimbDivisor& d) noexcept {
  if (n == 0) return 0;
  if (d.shift == 0) {
    Limb r = 0;
    for (size_t i = n; i-- != 0;) q[i] = QuotientLimb(&r, a[i], d.normalised, d.reciprocal);
    return r;
  }
  const uint32_t up = d.shift;
  const uint32_t down = kLimbBits - up;
  Limb r = a[n - 1] >> down;
  for (size_t i = n; i-- != 0;) {
    const Limb below = i != 0 ? a[i - 1] >> down : Limb{0};
    q[i] = QuotientLimb(&r, static_cast<Limb>(a[i] << up | below), d.normalised, d.reciprocal);
  }
  return r >> up;
}

void DivideRepeatedly(Limb (&remainders)[kRepeatedDivisions], Limb* a, size_t n,
                      const LimbDivisor& d) noexcept {
  const uint32_t up = d.shift;
  Limb r[kRepeatedDivisions] = {};
  for (size_t i = n; i-- != 0;) {
    Limb limb = a[i];
    for (Limb& remainder : r) {
      // The remainder's limb in front of this one, both shifted: below the divisor still.
      Limb high =
          up == 0 ? remainder : static_cast<Limb>(remainder << up | limb >> (kLimbBits - up));
      limb = QuotientLimb(&high, static_cast<Limb>(limb << up), d.normalised, d.reciprocal);
      remainder = high >> up;
    }
    a[i] = limb;
  }
  for (size_t j = 0; j < kRepeatedDivisions; ++j) remainders[j] = r[j];
}

Limb ModLimb(const Limb* a, size_t n, const LimbDivisor& d) noexcept {
  // Working on a * 2^shift modulo the normalised divisor needs one limb more and no shifts inside.
  Limb r = 0;
  for (size_t i = n; i-- != 0;) QuotientLimb(&r, a[i], d.normalised, d.reciprocal);
  if (d.shift == 0) return r;
  Limb high = r >> (kLimbBits - d.shift);
  QuotientLimb(&high, static_cast<Limb>(r << d.shift), d.normalised, d.reciprocal);
  return high >> d.shift;
}

CheckedSize DivideScratch(size_t m, size_t n) noexcept {
  const bool halves = m - n + 1 >= kBurnikelZieglerLimbs && n >= kBurnikelZieglerLimbs;
  if (!halves) return SizeConstant(0);
  return CheckedSize(n) + MultiplyScratch(n, n);
}

namespace {

// NormalisedDivision: a division after its first steps.
struct NormalisedDivision {
  uint32_t shift;   // of both operands, so that v's top bit is set
  size_t count;     // quotient limbs still to find; the top n limbs of u[n + count] are below v
  Limb reciprocal;  // of v's top two limbs
};

// Shapes: as for DivideInPlace, n >= 2.
__attribute__((always_inline)) inline NormalisedDivision Begin(Limb* q, Limb* u, size_t m, Limb* v, size_t n) {
  const uint32_t shift = LeadingZeros(v[n - 1]);
  u[m] = 0;
  if (shift != 0) {
    ShiftLeftLimbs(v, v, n, shift);
    u[m] = ShiftLeftLimbs(u, u, m, shift);
  }
  size_t count = m - n + 1;
  // What is shifted out is less than v's top limb; without it the limbs below are less than 2 v.
  if (u[m] == 0) q[--count] = ReduceTop(u, m, v, n);
  return {shift, count, Reciprocal2(v[n - 1], v[n - 2])};
}

}  // namespace

void DivideInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept {
  if (n == 1) {
    u[0] = DivideByLimb(q, u, m, PrepareDivisor(v[0]));
    return;
  }
  const NormalisedDivision begun = Begin(q, u, m, v, n);
  size_t count = begun.count;
  if (count < kBurnikelZieglerLimbs || n < kBurnikelZieglerLimbs) {
    SchoolbookDivide(q, u, n + count, v, n, begun.reciprocal, false);
  } else {
    // The top block takes what is over a multiple of n; each block leaves a remainder below v.
    while (count != 0) {
      const size_t block = count % n != 0 ? count % n : n;
      count -= block;
      BurnikelZieglerDivide(q + count, u + count, v, n, block, begun.reciprocal, scratch);
    }
  }
  if (begun.shift != 0) ShiftRightLimbs(u, u, n, begun.shift);
}

bool QuotientInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept {
  if (n == 1) {
    DivideByLimb(q, u, m, PrepareDivisor(v[0]));
    return true;
  }
  const NormalisedDivision begun = Begin(q, u, m, v, n);
  size_t count = begun.count;
  if (n < kBurnikelZieglerLimbs) {
    if (!SchoolbookDivide(q, u, n + count, v, n, begun.reciprocal, true)) return false;
  } else {
    while (count > n) {
      const size_t block = count % n != 0 ? count % n : n;
      count -= block;
      BurnikelZieglerDivide(q + count, u + count, v, n, block, begun.reciprocal, scratch);
    }
    if (!BurnikelZieglerQuotient(q, u, v, n, count, begun.reciprocal, scratch)) return false;
  }
  // The remainder is below v, and too large by less than count * B^(n - 1). Where it would not go
  // below zero without that, the quotient is right.
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
