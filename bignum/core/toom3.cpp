#include "toom3.h"

#include "limb_basics.h"
#include "multiply.h"

namespace mirolta {

namespace {

// Below, the simpler method is faster: measured for 64-bit limbs where rows use mulx and adx, by
// the count of instructions for 32-bit limbs.
constexpr size_t kKaratsubaLimbs = kLimbBits == 64 ? 36 : 60;
constexpr size_t kKaratsubaSquareLimbs = kLimbBits == 64 ? 48 : 112;
constexpr size_t kToom3Limbs = kLimbBits == 64 ? 130 : 220;

// z := |x - y| with y[n] shorter than x[m] by at most one limb; returns whether x < y.
bool AbsoluteDifference(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
  const LimbKernels& k = CurrentLimbKernels();
  const bool top = m > n && x[n] != 0;
  if (!top && CompareLimbs(x, y, n) < 0) {
    k.subtract(z, y, x, n);
    if (m > n) z[n] = 0;
    return true;
  }
  const Limb borrow = k.subtract(z, x, y, n);
  if (m > n) z[n] = static_cast<Limb>(x[n] - borrow);
  return false;
}

// x = x1 B^h + x0 and likewise y; the middle product is z0 + z2 - (x0 - x1)(y0 - y1).
void Karatsuba(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) {
  const LimbKernels& k = CurrentLimbKernels();
  const size_t h = (n + 1) / 2;
  const size_t t = n - h;
  Limb* const p = scratch;
  Limb* const rest = scratch + 2 * h;

  // z is free until the outer products, so the differences stand there.
  bool negative = AbsoluteDifference(z, x, h, x + h, t);
  const Limb* second = z;
  if (x == y) {
    negative = false;
  } else {
    negative ^= AbsoluteDifference(z + h, y, h, y + h, t);
    second = z + h;
  }
  MultiplyBalanced(p, z, second, h, rest);
  MultiplyBalanced(z, x, y, h, rest);
  MultiplyBalanced(z + 2 * h, x + h, y + h, t, rest);

  // The sum is below 2 B^2h, and the middle product is never negative.
  Limb* const middle = rest;
  Limb carry = k.add(middle, z, z + 2 * h, 2 * t);
  if (h != t) {
    CopyLimbs(middle + 2 * t, z + 2 * t, 2);
    carry = AddLimb(middle + 2 * t, 2, carry);
  }
  if (negative) {
    carry = static_cast<Limb>(carry + k.add(middle, middle, p, 2 * h));
  } else {
    carry = static_cast<Limb>(carry - k.subtract(middle, middle, p, 2 * h));
  }
  carry = static_cast<Limb>(carry + k.add(z + h, z + h, middle, 2 * h));
  AddLimb(z + 3 * h, 2 * n - 3 * h, carry);
}

// z := z / 3 in place, z a multiple of 3.
void DivideExactlyBy3(Limb* z, size_t n) {
  constexpr Limb kThird = kLimbMax / 3;      // floor(B / 3)
  constexpr Limb kInverse = kThird * 2 + 1;  // 3 * kInverse = 2 * (B - 1) + 3 = 1 mod B
  Limb borrow = 0;
  for (size_t i = 0; i < n; ++i) {
    const Limb s = static_cast<Limb>(z[i] - borrow);
    const Limb under = z[i] < borrow;
    const Limb q = static_cast<Limb>(s * kInverse);
    z[i] = q;
    borrow = static_cast<Limb>(under + (q > kThird) + (q > 2 * kThird));
  }
}

void Halve(Limb* z, size_t n) {
  ShiftRightLimbs(z, z, n, 1);
}

// The values of x2 X^2 + x1 X + x0 at 1, -1 (returns whether negative; the magnitude is stored) and
// 2. Shapes: x0 and x1 k limbs, x2 top limbs, top <= k; results k + 1 limbs each.
void EvaluateAt1(Limb* z, const Limb* x, size_t k, size_t top) {
  const LimbKernels& kernels = CurrentLimbKernels();
  Limb carry = kernels.add(z, x, x + 2 * k, top);
  CopyLimbs(z + top, x + top, k - top);
  carry = AddLimb(z + top, k - top, carry);
  z[k] = static_cast<Limb>(carry + kernels.add(z, z, x + k, k));
}

bool EvaluateAtMinus1(Limb* z, const Limb* x, size_t k, size_t top) {
  const LimbKernels& kernels = CurrentLimbKernels();
  Limb carry = kernels.add(z, x, x + 2 * k, top);
  CopyLimbs(z + top, x + top, k - top);
  carry = AddLimb(z + top, k - top, carry);
  z[k] = carry;
  if (carry == 0 && CompareLimbs(z, x + k, k) < 0) {
    kernels.subtract(z, x + k, z, k);
    return true;
  }
  z[k] = static_cast<Limb>(carry - kernels.subtract(z, z, x + k, k));
  return false;
}

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

// Splits in three, multiplies the values at 0, 1, -1, 2 and infinity, and interpolates.
void Toom3(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) {
  const LimbKernels& kernels = CurrentLimbKernels();
  const size_t k = (n + 2) / 3;
  const size_t top = n - 2 * k;
  const size_t w = 2 * k + 2;
  Limb* const vm1 = scratch;
  Limb* const v1 = scratch + w;
  Limb* const v2 = scratch + 2 * w;
  Limb* const rest = scratch + 3 * w;
  const bool square = x == y;

  // z is free until the outer products: the evaluated operands stand there.
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
  Limb* const v0 = z;
  Limb* const vinf = z + 4 * k;
  MultiplyBalanced(v0, x, y, k, rest);
  MultiplyBalanced(vinf, x + 2 * k, y + 2 * k, top, rest);

  // With c0..c4 the coefficients sought; every line's value is a sum of them with signs plus, so
  // nothing goes below zero, and all fit w limbs.
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

  // c2 has at most 2k + 1 limbs; the two between v0 and vinf hold none of c0 and c4.
  CopyLimbs(z + 2 * k, v1, 2 * k);
  AddLimb(vinf, 2 * top, v1[2 * k]);
  Limb carry = kernels.add(z + k, z + k, vm1, w);
  AddLimb(z + k + w, 2 * n - k - w, carry);
  // c3 B^3k fits the product, so the limbs of c3 that would stand above its end are zero.
  const size_t room = 2 * n - 3 * k;
  const size_t used = w < room ? w : room;
  carry = kernels.add(z + 3 * k, z + 3 * k, v2, used);
  AddLimb(z + 3 * k + used, room - used, carry);
}

}  // namespace

void MultiplyBalanced(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept {
  if (x == y && n < kKaratsubaSquareLimbs) {
    CurrentLimbKernels().square(z, x, n);
  } else if (n < kKaratsubaLimbs) {
    CurrentLimbKernels().multiply(z, x, n, y, n);
  } else if (n < kToom3Limbs) {
    Karatsuba(z, x, y, n, scratch);
  } else {
    Toom3(z, x, y, n, scratch);
  }
}

// Splits x in three and y in two, multiplies the values at 0, 1, -1 and infinity, and interpolates.
void Toom32(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n,
                        Limb* scratch) noexcept {
  const LimbKernels& kernels = CurrentLimbKernels();
  const size_t k = 2 * m >= 3 * n ? (m + 2) / 3 : (n + 1) / 2;
  const size_t top_x = m - 2 * k;
  const size_t top_y = n - k;
  const size_t w = 2 * k + 2;
  Limb* const v1 = scratch;
  Limb* const vm1 = scratch + w;
  Limb* const rest = scratch + 2 * w;

  // z is free until the outer products: the evaluated operands stand there.
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

  // With c0..c3 the coefficients sought, all values here are sums of them with signs plus.
  const size_t outer = top_x + top_y;
  kernels.subtract(vm1, v1, vm1, w);
  Halve(vm1, w);
  kernels.subtract(v1, v1, vm1, w);
  Limb* const c2 = negative ? vm1 : v1;  // c0 + c2 yet
  Limb* const c1 = negative ? v1 : vm1;  // c1 + c3 yet
  Limb borrow = kernels.subtract(c2, c2, z, 2 * k);
  SubtractLimb(c2 + 2 * k, 2, borrow);
  borrow = kernels.subtract(c1, c1, z + 3 * k, outer);
  SubtractLimb(c1 + outer, w - outer, borrow);

  // c2 has at most 2k + 1 limbs, and what the sums below reach stands within the product: for the
  // shapes here outer >= k + 2 and m + n - k > w.
  CopyLimbs(z + 2 * k, c2, k);
  Limb carry = kernels.add(z + 3 * k, z + 3 * k, c2 + k, k + 2);
  AddLimb(z + 3 * k + k + 2, outer - (k + 2), carry);
  carry = kernels.add(z + k, z + k, c1, w);
  AddLimb(z + k + w, m + n - k - w, carry);
}

}  // namespace mirolta
