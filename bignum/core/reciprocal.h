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

// Reciprocal returns floor((B^2 - 1) / d) - B.
inline Limb Reciprocal(Limb d) {
  return DivideWide(static_cast<Limb>(~d), kLimbMax, d);
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
