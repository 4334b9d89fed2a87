// Reciprocals of one-limb and two-limb divisors whose top bit is set.
// Source: Moeller and Granlund, Improved division by invariant integers, 2011.
#pragma once

#include "limb.h"

namespace mirolta {

// MaskIf returns a limb of one bits if it holds, else 0: for corrections whose branch would be
// unpredictable.
inline Limb MaskIf(bool holds) {
  return static_cast<Limb>(Limb{0} - static_cast<Limb>(holds));
}

// ReciprocalByProducts returns floor((B^2 - 1) / d) - B, for processors that would call a function of
// the compiler's library to divide a double limb.
inline Limb ReciprocalByProducts(Limb d) {
  // With D = d / B in [1/2, 1): 2.914 - 2 D is 1 / D to three bits. B / 2 stands for 1.
  constexpr Limb kHalfOfSeed = static_cast<Limb>(uint64_t{0xBA82799900000000} >> (64 - kLimbBits));
  Limb r = static_cast<Limb>(2 * kHalfOfSeed - d);
  for (uint32_t bits = 3; bits < kLimbBits; bits *= 2) {
    // Newton's step r (2 - D r). Everything is rounded down, so that r stays below 1 / D.
    const Limb error = static_cast<Limb>(~Product(d, r).high);
    const LimbPair p = Product(r, error);
    r = static_cast<Limb>(p.high << 1 | p.low >> (kLimbBits - 1));
  }
  // 2 r is the quotient or a few less. Newton's steps leave at most four for 32-bit limbs.
  const LimbPair p = Product(d, r);
  LimbPair rest = SubtractPair({kLimbMax, kLimbMax}, AddPair(p, p));
  Limb quotient = static_cast<Limb>(2 * r);
  while (rest.high != 0 || rest.low >= d) {
    rest = SubtractPair(rest, {d, 0});
    ++quotient;
  }
  return quotient;
}

// Reciprocal returns floor((B^2 - 1) / d) - B.
inline Limb Reciprocal(Limb d) {
  if constexpr (kDividesWide) {
    return DivideWide(static_cast<Limb>(~d), kLimbMax, d);
  } else {
    return ReciprocalByProducts(d);
  }
}

// Reciprocal3By2 returns floor((B^3 - 1) / (d1 B + d0)) - B.
// Source: algorithm 6 there.
inline Limb Reciprocal3By2(Limb d1, Limb d0) {
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

}  // namespace mirolta
