#include "toom3.h"

#include "multiply.h"
#include "toom_evaluation.h"

namespace mirolta {

namespace {

// z := z / 3 in place, z a multiple of 3.
// Source: Jebelean, An algorithm for exact division, 1993.
void DivideExactlyBy3(Limb* z, size_t n) {
  constexpr Limb kThird = kLimbMax / 3;      // floor(B / 3)
  constexpr Limb kInverse = kThird * 2 + 1;  // 3 * kInverse = 2 * (B - 1) + 3 = 1 mod B
  Limb borrow = 0;                           // 0 to 2: what q * 3 has above the limb, plus a borrow
  for (size_t i = 0; i < n; ++i) {
    const Limb s = static_cast<Limb>(z[i] - borrow);
    const Limb under = z[i] < borrow;
    const Limb q = static_cast<Limb>(s * kInverse);
    z[i] = q;
    borrow = static_cast<Limb>(under + (q > kThird) + (q > 2 * kThird));
  }
}

// z := X(2) of X(t) = x2 t^2 + x1 t + x0.
// Shapes: as for EvaluateAt1.
void EvaluateAt2(Limb* z, const Limb* x, size_t k, size_t top) {
  const LimbKernels& kernels = CurrentLimbKernels();
  // ((2 x2) + x1) * 2 + x0, below 7 B^k
  Limb over = ShiftLeftLimbs(z, x + 2 * k, top, 1);
  ZeroLimbs(z + top, k + 1 - top);
  z[top] = over;
  z[k] = static_cast<Limb>(z[k] + kernels.add(z, z, x + k, k));
  ShiftLeftLimbs(z, z, k + 1, 1);
  z[k] = static_cast<Limb>(z[k] + kernels.add(z, z, x, k));
}

// Interpolates the product: z := sum of c(i) * B^(k i) for its coefficients c0..c4.
// Shapes: z[2n] holds the products at 0 and, from 4k on, at infinity; values[3 (2k + 2)] those at
//         -1, 1 and 2, the first one's magnitude, destroyed.
void Interpolate(Limb* z, Limb* values, size_t n, bool negative) {
  const LimbKernels& kernels = CurrentLimbKernels();
  const size_t k = (n + 2) / 3;
  const size_t top = n - 2 * k;
  const size_t w = 2 * k + 2;
  Limb* const vm1 = values;
  Limb* const v1 = values + w;
  Limb* const v2 = values + 2 * w;
  Limb* const v0 = z;
  Limb* const vinf = z + 4 * k;

  // Each intermediate value is a sum of c0..c4 with positive factors, so no subtraction borrows,
  // and all fit w limbs.
  if (negative) {
    kernels.add(v2, v2, vm1, w);
    kernels.add(vm1, v1, vm1, w);
  } else {
    kernels.subtract(v2, v2, vm1, w);
    kernels.subtract(vm1, v1, vm1, w);
  }
  DivideExactlyBy3(v2, w);  // c1 + c2 + 3 c3 + 5 c4
  Halve(vm1, w);            // c1 + c3
  Limb borrow = kernels.subtract(v1, v1, v0, 2 * k);
  SubtractLimb(v1 + 2 * k, 2, borrow);  // c1 + c2 + c3 + c4
  kernels.subtract(v2, v2, v1, w);
  Halve(v2, w);                      // c3 + 2 c4
  kernels.subtract(v1, v1, vm1, w);  // c2 + c4
  borrow = kernels.subtract(v1, v1, vinf, 2 * top);
  SubtractLimb(v1 + 2 * top, w - 2 * top, borrow);  // c2
  for (int i = 0; i < 2; ++i) {
    borrow = kernels.subtract(v2, v2, vinf, 2 * top);
    SubtractLimb(v2 + 2 * top, w - 2 * top, borrow);
  }                                   // c3
  kernels.subtract(vm1, vm1, v2, w);  // c1

  // c2 has at most 2k + 1 limbs. Its lower 2k lie between c0 and c4, where nothing is stored yet.
  CopyLimbs(z + 2 * k, v1, 2 * k);
  AddLimb(vinf, 2 * top, v1[2 * k]);
  Limb carry = kernels.add(z + k, z + k, vm1, w);
  AddLimb(z + k + w, 2 * n - k - w, carry);
  // c3 B^3k is less than the product, so the limbs of c3 above the product's end are zero.
  const size_t room = 2 * n - 3 * k;
  const size_t used = w < room ? w : room;
  carry = kernels.add(z + 3 * k, z + 3 * k, v2, used);
  AddLimb(z + 3 * k + used, room - used, carry);
}

}  // namespace

void Toom3(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept {
  const size_t k = (n + 2) / 3;
  const size_t top = n - 2 * k;
  const size_t w = 2 * k + 2;
  Limb* const vm1 = scratch;
  Limb* const v1 = scratch + w;
  Limb* const v2 = scratch + 2 * w;
  Limb* const rest = scratch + 3 * w;
  const bool square = x == y;

  // z holds the evaluated operands until the outer products are written there.
  Limb* const ex = z;
  Limb* const ey = square ? z : z + k + 1;
  bool negative = EvaluateAtMinus1(ex, x, k, top);
  if (square) {
    negative = false;
  } else {
    negative ^= EvaluateAtMinus1(ey, y, k, top);
  }
  MultiplyBalanced(vm1, ex, ey, k + 1, rest);
  EvaluateAt1(ex, x, k, top);
  if (!square) EvaluateAt1(ey, y, k, top);
  MultiplyBalanced(v1, ex, ey, k + 1, rest);
  EvaluateAt2(ex, x, k, top);
  if (!square) EvaluateAt2(ey, y, k, top);
  MultiplyBalanced(v2, ex, ey, k + 1, rest);
  MultiplyBalanced(z, x, y, k, rest);
  MultiplyBalanced(z + 4 * k, x + 2 * k, y + 2 * k, top, rest);
  Interpolate(z, scratch, n, negative);
}

}  // namespace mirolta
