// Evaluation and interpolation that the Toom-Cook methods share.
#pragma once

#include "limb_basics.h"

namespace mirolta {

// EvaluateAt1 and EvaluateAtMinus1: z := |X(1)| or |X(-1)| of X(t) = x2 t^2 + x1 t + x0.
// EvaluateAtMinus1 returns whether X(-1) is negative.
// Shapes: x[2k + top] is x0 and x1 of k limbs, x2 of top limbs, top <= k; z[k + 1].
// Alias:  none.
inline void EvaluateAt1(Limb* z, const Limb* x, size_t k, size_t top) {
  const LimbKernels& kernels = CurrentLimbKernels();
  // x0 + x1 + x2 < 3 B^k, so that z[k] <= 2.
  Limb carry = kernels.add(z, x, x + 2 * k, top);
  CopyLimbs(z + top, x + top, k - top);
  carry = AddLimb(z + top, k - top, carry);
  z[k] = static_cast<Limb>(carry + kernels.add(z, z, x + k, k));
}

inline bool EvaluateAtMinus1(Limb* z, const Limb* x, size_t k, size_t top) {
  const LimbKernels& kernels = CurrentLimbKernels();
  Limb carry = kernels.add(z, x, x + 2 * k, top);
  CopyLimbs(z + top, x + top, k - top);
  carry = AddLimb(z + top, k - top, carry);
  z[k] = carry;
  if (carry == 0 && CompareLimbs(z, x + k, k) < 0) {
    kernels.subtract(z, x + k, z, k);
    return true;
  }
  // x0 + x2 >= x1 here: no borrow beyond z[k].
  z[k] = static_cast<Limb>(carry - kernels.subtract(z, z, x + k, k));
  return false;
}

// Halve: z := z / 2 in place.
// Shapes: z[n], even.
inline void Halve(Limb* z, size_t n) {
  ShiftRightLimbs(z, z, n, 1);
}

}  // namespace mirolta
