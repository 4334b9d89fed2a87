#include "limb_divide.h"

#include "limb_basics.h"
#include "limb_multiply.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

// Below, division by rows is as fast as by halves: measured for 64-bit limbs, estimated for 32-bit
// limbs.
constexpr size_t kHalvesLimbs = kLimbBits == 64 ? 20 : 64;

Limb Reciprocal(Limb d) {
  const DoubleLimb top = static_cast<DoubleLimb>(static_cast<Limb>(~d)) << kLimbBits | kLimbMax;
  return static_cast<Limb>(top / d);
}

// Reciprocal of a two-limb divisor: floor((B^3 - 1) / (d1 B + d0)) - B.
Limb Reciprocal2(Limb d1, Limb d0) {
  Limb v = Reciprocal(d1);
  Limb p = static_cast<Limb>(d1 * v + d0);
  if (p < d0) {
    --v;
    if (p >= d1) {
      --v;
      p = static_cast<Limb>(p - d1);
    }
    p = static_cast<Limb>(p - d1);
  }
  const LimbPair t = Product(v, d0);
  p = static_cast<Limb>(p + t.high);
  if (p < t.high) {
    --v;
    if (p > d1 || (p == d1 && t.low >= d0)) --v;
  }
  return v;
}

// Quotient of (high, low) by the normalised divisor, high below it; the remainder replaces high.
inline Limb QuotientLimb(Limb* high, Limb low, Limb d, Limb v) {
  const LimbPair p = Product(v, *high);
  const Limb q0 = static_cast<Limb>(p.low + low);
  Limb q = static_cast<Limb>(p.high + *high + (q0 < low) + 1);
  Limb r = static_cast<Limb>(low - q * d);
  // Half of all times, so it is no branch; the next correction is rare.
  const Limb over = static_cast<Limb>(Limb{0} - static_cast<Limb>(r > q0));
  q = static_cast<Limb>(q + over);
  r = static_cast<Limb>(r + (d & over));
  if (r >= d) {
    ++q;
    r = static_cast<Limb>(r - d);
  }
  *high = r;
  return q;
}

// How rows are taken away from the window: short ones as they are. Whether a quotient limb is one
// too large is guessed by the processor, as a round is short.
struct ShortRows {
  static constexpr size_t kMostLimbs = 10;
  static constexpr bool kGuesses = true;
  static Limb Stored(Limb x) { return x; }
  static void Enter(Limb*, size_t) {}
  static Limb Row(const LimbKernels& k, Limb* z, const Limb* x, size_t n, Limb y) {
    return k.mulSub1(z, x, n, y);
  }
  static Limb Back(const LimbKernels& k, Limb* z, const Limb* x, size_t n) {
    return k.add(z, z, x, n);
  }
};

// Long ones on the complements of the limbs: taking a row away from a number is adding it to the
// complement, with the same carry, and the kernels add rows faster. A wrong guess would hold up the
// next round's start by more than it costs to do without.
struct LongRows {
  static constexpr bool kGuesses = false;
  static Limb Stored(Limb x) { return static_cast<Limb>(~x); }
  static void Enter(Limb* a, size_t n) {
    for (size_t i = 0; i < n; ++i) a[i] = static_cast<Limb>(~a[i]);
  }
  static Limb Row(const LimbKernels& k, Limb* z, const Limb* x, size_t n, Limb y) {
    return k.mulAdd1(z, x, n, y);
  }
  static Limb Back(const LimbKernels& k, Limb* z, const Limb* x, size_t n) {
    return k.subtract(z, z, x, n);
  }
};

template <typename Rows>
void DivideRows(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb v) {
  const LimbKernels& k = CurrentLimbKernels();
  const Limb d1 = d[n - 1];
  const Limb d0 = d[n - 2];
  // The window's two top limbs go from one round to the next outside a.
  Limb u2 = a[m - 1];
  Limb u1 = a[m - 2];
  Rows::Enter(a, m);
  for (size_t j = m - n; j-- != 0;) {
    Limb* const w = a + j;
    const Limb u0 = Rows::Stored(w[n - 2]);
    if (u2 == d1 && u1 == d0) {
      // The window is below d * B, and with equal top limbs the quotient limb is B - 1 exactly.
      w[n - 1] = Rows::Stored(u1);
      Rows::Row(k, w, d, n, kLimbMax);
      u2 = Rows::Stored(w[n - 1]);
      u1 = Rows::Stored(w[n - 2]);
      q[j] = kLimbMax;
      continue;
    }
    // Three limbs by two.
    const LimbPair p = Product(v, u2);
    const Limb q0 = static_cast<Limb>(p.low + u1);
    Limb quotient = static_cast<Limb>(p.high + u2 + (q0 < u1));
    const LimbPair t = Product(d0, quotient);
    Limb r0 = static_cast<Limb>(u0 - t.low);
    Limb r1 = static_cast<Limb>(u1 - quotient * d1 - t.high - (u0 < t.low));
    r1 = static_cast<Limb>(r1 - d1 - (r0 < d0));
    r0 = static_cast<Limb>(r0 - d0);
    ++quotient;
    if constexpr (Rows::kGuesses) {
      if (r1 >= q0) {
        --quotient;
        r0 = static_cast<Limb>(r0 + d0);
        r1 = static_cast<Limb>(r1 + d1 + (r0 < d0));
      }
    } else {
      const Limb less = static_cast<Limb>(Limb{0} - static_cast<Limb>(r1 >= q0));
      quotient = static_cast<Limb>(quotient + less);
      r0 = static_cast<Limb>(r0 + (d0 & less));
      r1 = static_cast<Limb>(r1 + (d1 & less) + (r0 < (d0 & less)));
    }
    if (r1 > d1 || (r1 == d1 && r0 >= d0)) {
      ++quotient;
      r1 = static_cast<Limb>(r1 - d1 - (r0 < d0));
      r0 = static_cast<Limb>(r0 - d0);
    }
    const Limb missing = Rows::Row(k, w, d, n - 2, quotient);
    const Limb borrow0 = r0 < missing;
    r0 = static_cast<Limb>(r0 - missing);
    const Limb borrow1 = r1 < borrow0;
    r1 = static_cast<Limb>(r1 - borrow0);
    if (borrow1 != 0) {
      w[n - 2] = Rows::Stored(r0);
      r1 = static_cast<Limb>(r1 + d1 + Rows::Back(k, w, d, n - 1));
      r0 = Rows::Stored(w[n - 2]);
      --quotient;
    }
    q[j] = quotient;
    u2 = r1;
    u1 = r0;
  }
  Rows::Enter(a, n - 2);
  a[n - 1] = u2;
  a[n - 2] = u1;
}

// Divides by rows: a[m] becomes the remainder in a[n], q[m - n] the quotient's low limbs; returns
// its top limb, 0 or 1. d[n] has its top bit set, n >= 2, v is the reciprocal of its top two limbs.
Limb DivideByRows(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb v) {
  Limb top = 0;
  if (CompareLimbs(a + m - n, d, n) >= 0) {
    CurrentLimbKernels().subtract(a + m - n, a + m - n, d, n);
    top = 1;
  }
  if (n <= ShortRows::kMostLimbs) {
    DivideRows<ShortRows>(q, a, m, d, n, v);
  } else {
    DivideRows<LongRows>(q, a, m, d, n, v);
  }
  return top;
}

// Divides a[n + count] by d[n] for count <= n quotient limbs, as DivideByRows does; the top n limbs
// of a are below 2d. scratch has n limbs and the working memory of a product.
Limb DivideByHalves(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                    Limb* scratch) {
  if (count < kHalvesLimbs) return DivideByRows(q, a, n + count, d, n, v);
  const LimbKernels& k = CurrentLimbKernels();
  if (count == n) {
    const size_t low = n / 2;
    const Limb top = DivideByHalves(q + low, a + low, d, n, n - low, v, scratch);
    // The remainder so far is below d, so the second half has no top limb.
    DivideByHalves(q, a, d, n, low, v, scratch);
    return top;
  }
  // Divide by the divisor's top limbs, then take away what its low limbs contribute.
  const size_t rest = n - count;
  Limb top = DivideByHalves(q, a + rest, d + rest, count, count, v, scratch);
  MultiplyLimbs(scratch, q, count, d, rest, scratch + n);
  Limb missing = k.subtract(a, a, scratch, n);
  if (top != 0) missing = static_cast<Limb>(missing + k.subtract(a + count, a + count, d, rest));
  while (missing != 0) {
    top = static_cast<Limb>(top - SubtractLimb(q, count, 1));
    missing = static_cast<Limb>(missing - k.add(a, a, d, n));
  }
  return top;
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

size_t DivideScratch(size_t m, size_t n) noexcept {
  const bool halves = m - n + 1 >= kHalvesLimbs && n >= kHalvesLimbs;
  return halves ? n + MultiplyScratch(n, n) : 0;
}

void DivideInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, bool wants_remainder,
                   Limb* scratch) noexcept {
  if (n == 1) {
    u[0] = DivideByLimb(q, u, m, PrepareDivisor(v[0]));
    return;
  }
  // After the shift the top n limbs of u are below v: u's top limb is below 2^shift, v's is not.
  const uint32_t shift = LeadingZeros(v[n - 1]);
  u[m] = 0;
  if (shift != 0) {
    ShiftLeftLimbs(v, v, n, shift);
    u[m] = ShiftLeftLimbs(u, u, m, shift);
  }
  const size_t count = m - n + 1;
  const Limb reciprocal = Reciprocal2(v[n - 1], v[n - 2]);
  if (count < kHalvesLimbs || n < kHalvesLimbs) {
    DivideByRows(q, u, m + 1, v, n, reciprocal);
  } else {
    // The top block takes what is over a multiple of n; each block leaves a remainder below v.
    size_t done = count;
    while (done != 0) {
      const size_t block = done % n != 0 ? done % n : n;
      done -= block;
      DivideByHalves(q + done, u + done, v, n, block, reciprocal, scratch);
    }
  }
  if (wants_remainder && shift != 0) ShiftRightLimbs(u, u, n, shift);
}

bool DivideLimbs(Limb* q, Limb* r, const Limb* a, size_t m, const Limb* d, size_t n) noexcept {
  if (n == 1) {
    const LimbDivisor divisor = PrepareDivisor(d[0]);
    const Limb remainder = q != nullptr ? DivideByLimb(q, a, m, divisor) : ModLimb(a, m, divisor);
    if (r != nullptr) r[0] = remainder;
    return true;
  }
  const size_t count = m - n + 1;  // quotient limbs
  LimbScratch memory((m + 1) + n + count + DivideScratch(m, n));
  if (memory.get() == nullptr) return false;
  Limb* const u = memory.get();
  Limb* const v = u + m + 1;
  Limb* const quotient = v + n;
  CopyLimbs(u, a, m);
  CopyLimbs(v, d, n);
  DivideInPlace(quotient, u, m, v, n, r != nullptr, quotient + count);
  if (q != nullptr) CopyLimbs(q, quotient, count);
  if (r != nullptr) CopyLimbs(r, u, n);
  return true;
}

}  // namespace mirolta
