// Montgomery multiplication of a fixed number of limbs.
#pragma once

#include "operand_scanning.h"

namespace mirolta {

// MontgomeryOf: z := x * y / B^kCount mod m. All sums stay in registers, as the compiler knows the
// count. Each step adds a row of x * y and the multiple of m that makes the lowest limb zero, and
// drops that limb. With t < m + y before a step, the sums are below (m + y) * B, and t < m + y
// after it.
// Shapes: x[kCount], y[kCount], z[kCount] < m, m[kCount] odd; inverse is -1 / m mod B.
// Alias:  z may be x or y.
// Source: Koc, Acar and Kaliski, Analyzing and comparing Montgomery multiplication algorithms,
//         1996, FIOS.
template <size_t kCount>
inline void MontgomeryOf(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t[kCount + 1] = {};
  for (size_t i = 0; i < kCount; ++i) {
    const Limb factor = x[i];
    LimbPair row = WideProducts::MulAdd(y[0], factor, t[0], 0);
    const Limb multiple = static_cast<Limb>(row.low * inverse);
    LimbPair zero = WideProducts::MulAdd(m[0], multiple, row.low, 0);
    for (size_t j = 1; j < kCount; ++j) {
      row = WideProducts::MulAdd(y[j], factor, t[j], row.high);
      zero = WideProducts::MulAdd(m[j], multiple, row.low, zero.high);
      t[j - 1] = zero.low;
    }
    // t[kCount] is 0 or 1, so that top < 2 B.
    const DoubleLimb top = static_cast<DoubleLimb>(row.high) + zero.high + t[kCount];
    t[kCount - 1] = static_cast<Limb>(top);
    t[kCount] = static_cast<Limb>(top >> kLimbBits);
  }
  Limb difference[kCount];
  const Limb borrow = SumLoops::Subtract(difference, t, m, kCount);
  const Limb keep = static_cast<Limb>(0 - static_cast<Limb>(t[kCount] < borrow));
  for (size_t i = 0; i < kCount; ++i) z[i] = (t[i] & keep) | (difference[i] & ~keep);
}

}  // namespace mirolta
