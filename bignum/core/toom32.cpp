#include "toom32.h"

#include "multiply.h"
#include "toom_evaluation.h"

namespace mirolta {

void Toom32(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n, Limb* scratch) noexcept {
  const LimbKernels& kernels = CurrentLimbKernels();
  const size_t k = 2 * m >= 3 * n ? (m + 2) / 3 : (n + 1) / 2;
  const size_t top_x = m - 2 * k;
  const size_t top_y = n - k;
  const size_t w = 2 * k + 2;
  Limb* const v1 = scratch;
  Limb* const vm1 = scratch + w;
  Limb* const rest = scratch + 2 * w;

  // z holds the evaluated operands until the outer products are written there.
  Limb* const ex = z;
  Limb* const ey = z + k + 1;
  EvaluateAt1(ex, x, k, top_x);
  const Limb carry_y = kernels.add(ey, y, y + k, top_y);
  CopyLimbs(ey + top_y, y + top_y, k - top_y);
  ey[k] = AddLimb(ey + top_y, k - top_y, carry_y);
  MultiplyBalanced(v1, ex, ey, k + 1, rest);
  bool negative = EvaluateAtMinus1(ex, x, k, top_x);
  CopyLimbs(ey, y + k, top_y);
  ZeroLimbs(ey + top_y, k + 1 - top_y);
  if (CompareLimbs(y, ey, k) < 0) {
    kernels.subtract(ey, ey, y, k);
    negative = !negative;
  } else {
    kernels.subtract(ey, y, ey, k);
  }
  MultiplyBalanced(vm1, ex, ey, k + 1, rest);
  MultiplyBalanced(z, x, y, k, rest);
  MultiplyLimbs(z + 3 * k, x + 2 * k, top_x, y + k, top_y, rest);

  // Let c0..c3 be the product's coefficients. Each intermediate value is a sum of them with
  // positive factors, so no subtraction borrows.
  const size_t outer = top_x + top_y;
  kernels.subtract(vm1, v1, vm1, w);
  Halve(vm1, w);
  kernels.subtract(v1, v1, vm1, w);
  Limb* const c2 = negative ? vm1 : v1;  // c0 + c2 so far
  Limb* const c1 = negative ? v1 : vm1;  // c1 + c3 so far
  Limb borrow = kernels.subtract(c2, c2, z, 2 * k);
  SubtractLimb(c2 + 2 * k, 2, borrow);
  borrow = kernels.subtract(c1, c1, z + 3 * k, outer);
  SubtractLimb(c1 + outer, w - outer, borrow);

  // c2 has at most 2k + 1 limbs. The sums below stay within the product: outer >= k + 2 and
  // m + n - k > w for these shapes.
  CopyLimbs(z + 2 * k, c2, k);
  Limb carry = kernels.add(z + 3 * k, z + 3 * k, c2 + k, k + 2);
  AddLimb(z + 3 * k + k + 2, outer - (k + 2), carry);
  carry = kernels.add(z + k, z + k, c1, w);
  AddLimb(z + k + w, m + n - k - w, carry);
}

}  // namespace mirolta
