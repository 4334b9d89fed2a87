#include "euclid_steps.h"

#include "limb_basics.h"
#include "small_quotient.h"

namespace mirolta {

namespace {

constexpr uint64_t kFloor = uint64_t{1} << 34;

// Euclid's steps on approximations x and y, which differ from the true values by at most 2. A step
// is taken only while the new remainder z and y - z are at least kFloor. Then every cofactor is at
// most x / y <= 2^64 / 2^34 = 2^30, and the true remainders differ from the approximate ones by at
// most 2 * 2 * 2^30 < kFloor / 2. So 0 < z < y holds for the true values too, and the quotient is
// the same.
void Simulate(uint64_t x, uint64_t y, EuclidSteps* steps) {
  if (y < kFloor) return;
  for (;;) {
    uint64_t quotient = 1;
    uint64_t z = x - y;
    // Most quotients are small, and a subtraction costs less than a division.
    if (z >= y) {
      z -= y;
      quotient = 2;
      if (z >= y) {
        quotient += SmallQuotient(&z, y);
      }
    }
    if (z < kFloor || y - z < kFloor) return;
    steps->Step(static_cast<Limb>(quotient));
    x = y;
    y = z;
  }
}

}  // namespace

bool FindEuclidSteps(EuclidSteps* steps, const Limb* x_limbs, const Limb* y_limbs,
                     size_t n) noexcept {
  if (y_limbs[n - 1] > x_limbs[n - 1]) return false;  // normalising x would shift bits out of y
  const uint32_t shift = LeadingZeros(x_limbs[n - 1]);
  const auto top = [n, shift](const Limb* z) {
    DoubleLimb t = static_cast<DoubleLimb>(z[n - 1]) << kLimbBits | z[n - 2];
    if (shift != 0) t = t << shift | z[n - 3] >> (kLimbBits - shift);
    return t;
  };
  const DoubleLimb x = top(x_limbs);
  const DoubleLimb y = top(y_limbs);
  if (y > x) return false;
  if constexpr (kLimbBits == 32) {
    Simulate(static_cast<uint64_t>(x), static_cast<uint64_t>(y), steps);
    return steps->Changed();
  } else {
    EuclidSteps first;
    Simulate(static_cast<uint64_t>(x >> 32 >> 32), static_cast<uint64_t>(y >> 32 >> 32), &first);
    if (!first.Changed()) return false;
    // The double limbs after these steps have an error below 2^31. Truncating them to 64 bits drops
    // at least 33 bits, which makes that an error below 1 and adds less than 1.
    DoubleLimb a = x * first.u0 - y * first.v0;
    DoubleLimb b = y * first.v1 - x * first.u1;
    if (first.odd) {
      a = 0 - a;
      b = 0 - b;
    }
    const uint32_t bits = 128 - LeadingZeros(static_cast<Limb>(a >> 32 >> 32));
    const uint32_t cut = bits - 64;
    EuclidSteps second;
    Simulate(static_cast<uint64_t>(a >> cut), static_cast<uint64_t>(b >> cut), &second);
    steps->u0 = second.u0 * first.u0 + second.v0 * first.u1;
    steps->v0 = second.u0 * first.v0 + second.v0 * first.v1;
    steps->u1 = second.u1 * first.u0 + second.v1 * first.u1;
    steps->v1 = second.u1 * first.v0 + second.v1 * first.v1;
    steps->odd = first.odd != second.odd;
    return true;
  }
}

void ReduceByEuclidSteps(const EuclidSteps& steps, Limb* x1, Limb* y1, const Limb* x, const Limb* y,
                         size_t n) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  // After an odd number of steps they are v0 y - u0 x and u1 x - v1 y. The carries of both products are
  // equal, so they cancel.
  k.mul1(x1, steps.odd ? y : x, n, steps.odd ? steps.v0 : steps.u0);
  k.mul_sub1(x1, steps.odd ? x : y, n, steps.odd ? steps.u0 : steps.v0);
  k.mul1(y1, steps.odd ? x : y, n, steps.odd ? steps.u1 : steps.v1);
  k.mul_sub1(y1, steps.odd ? y : x, n, steps.odd ? steps.v1 : steps.u1);
}

void MultiplyByEuclidSteps(const EuclidSteps& steps, Limb* z0, Limb* z1, const Limb* t0,
                           const Limb* t1, size_t n) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  const Limb c0 = k.mul1(z0, t0, n, steps.u0);
  const Limb d0 = k.mul_add1(z0, t1, n, steps.v0);
  const Limb c1 = k.mul1(z1, t0, n, steps.u1);
  const Limb d1 = k.mul_add1(z1, t1, n, steps.v1);
  z0[n] = static_cast<Limb>(c0 + d0);
  z1[n] = static_cast<Limb>(c1 + d1);
}

}  // namespace mirolta
