#include "karatsuba.h"

#include "limb_basics.h"
#include "multiply.h"

namespace mirolta {

namespace {

// z := |x - y|; returns whether x < y.
// Shapes: x[m], y[n], z[m], m = n or n + 1.
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

}  // namespace

void Karatsuba(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  const size_t h = (n + 1) / 2;
  const size_t t = n - h;
  Limb* const p = scratch;
  Limb* const rest = scratch + 2 * h;

  // z holds |x0 - x1| and |y0 - y1| until the outer products are written there.
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

  // The middle product, x0 y1 + x1 y0, is not negative and below 2 B^2h, so that carry stays small.
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

}  // namespace mirolta
