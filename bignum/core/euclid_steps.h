// Several of Euclid's steps at once, as Lehmer's algorithm finds them from the leading limbs.
#pragma once

#include "limb.h"

namespace mirolta {

// EuclidSteps: several steps from a pair x, y. They give +-(u0 x - v0 y) and -+(u1 x - v1 y), the upper
// signs for an even number of steps. The cofactors' magnitudes take the same factors, all positive.
struct EuclidSteps {
  Limb u0 = 1, v0 = 0;
  Limb u1 = 0, v1 = 1;
  bool odd = false;

  void Step(Limb quotient) {
    const Limb u = static_cast<Limb>(u0 + quotient * u1);
    const Limb v = static_cast<Limb>(v0 + quotient * v1);
    u0 = u1;
    v0 = v1;
    u1 = u;
    v1 = v;
    odd = !odd;
  }
  bool Changed() const { return u1 != 0; }
};

// FindEuclidSteps finds steps from the two leading limbs of x. Returns false, with no steps, if the next
// quotient is large or the leading limbs do not determine it. The new pair and its difference are at
// least x / 2^62, for limbs of 32 bits x / 2^31.
// Shapes: x[n], y[n], n >= 3, x[n - 1] != 0.
// Source: Lehmer 1938; Knuth TAOCP 2, 4.5.2, algorithm L.
bool FindEuclidSteps(EuclidSteps* steps, const Limb* x, const Limb* y, size_t n) noexcept;

// ReduceByEuclidSteps: x1, y1 := the pair after the steps.
// Shapes: x[n], y[n], x1[n], y1[n].
// Alias:  none.
void ReduceByEuclidSteps(const EuclidSteps& steps, Limb* x1, Limb* y1, const Limb* x, const Limb* y,
                         size_t n) noexcept;

// MultiplyByEuclidSteps: z0 := u0 t0 + v0 t1, z1 := u1 t0 + v1 t1.
// Shapes: t0[n], t1[n]; z0[n + 1], z1[n + 1], which the results fit.
// Alias:  none.
void MultiplyByEuclidSteps(const EuclidSteps& steps, Limb* z0, Limb* z1, const Limb* t0,
                           const Limb* t1, size_t n) noexcept;

}  // namespace mirolta
