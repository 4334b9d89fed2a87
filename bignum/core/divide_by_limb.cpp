#include "divide_by_limb.h"

#include "reciprocal.h"

namespace mirolta {

namespace {

// Quotient of high B + low by the normalised divisor d, high < d, v its reciprocal; the remainder
// replaces high.
inline Limb QuotientLimb(Limb* high, Limb low, Limb d, Limb v) {
  const LimbPair p = Product(v, *high);
  const Limb q0 = static_cast<Limb>(p.low + low);
  Limb q = static_cast<Limb>(p.high + *high + (q0 < low) + 1);
  Limb r = static_cast<Limb>(low - q * d);
  // Needed with probability 1/2, so masked; the next correction is rare.
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
      // The remainder above this limb, both shifted: still below the divisor.
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
  // Modulo the normalised divisor, then of that remainder: no shift in the loop.
  Limb r = 0;
  for (size_t i = n; i-- != 0;) QuotientLimb(&r, a[i], d.normalised, d.reciprocal);
  if (d.shift == 0) return r;
  Limb high = r >> (kLimbBits - d.shift);
  QuotientLimb(&high, static_cast<Limb>(r << d.shift), d.normalised, d.reciprocal);
  return high >> d.shift;
}

}  // namespace mirolta
