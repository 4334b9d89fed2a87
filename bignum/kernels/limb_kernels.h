// The loops over limbs, as one table for each instruction set.
#pragma once

#include "limb.h"

namespace mirolta {

// LimbKernels: one implementation of every loop.
// Shapes: limbs least significant first; counts may be 0 unless stated.
// Alias:  unless stated, an output may be an input; partial overlap is not allowed.
// Time:   depends on the counts only.
struct LimbKernels {
  // z := x + y, returns the carry.
  // Shapes: x[n], y[n], z[n].
  Limb (*add)(Limb* z, const Limb* x, const Limb* y, size_t n);
  // z := x - y, returns the borrow.
  // Shapes: x[n], y[n], z[n].
  Limb (*subtract)(Limb* z, const Limb* x, const Limb* y, size_t n);
  // z := x * y, returns the carry limb.
  // Shapes: x[n], z[n].
  Limb (*mul1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := z + x * y, returns the carry limb.
  // Shapes: x[n], z[n].
  Limb (*mul_add1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := z - x * y, returns the borrow limb.
  // Shapes: x[n], z[n].
  Limb (*mul_sub1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := x * y, schoolbook.
  // Shapes: x[m], y[n], z[m + n], m >= n >= 1.
  // Alias:  z overlaps neither.
  void (*multiply)(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n);
  // z := x * x, schoolbook.
  // Shapes: x[n], z[2n], n >= 1.
  // Alias:  z does not overlap x.
  void (*square)(Limb* z, const Limb* x, size_t n);
  // z := t / B^n mod m (Montgomery reduction).
  // Shapes: t[2n] < m * B^n, destroyed; m[n] odd; z[n]; inverse is -1 / m mod B.
  // Alias:  z overlaps neither t nor m.
  void (*reduce)(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse);
  // z := x * y / B^n mod m (Montgomery multiplication) for the few n with code of their own;
  // returns false for others, with nothing written.
  // Shapes: x[n], y[n], z[n] < m, m[n] odd.
  bool (*montgomery)(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n, Limb inverse);
};

extern const KernelList<const LimbKernels*> kLimbKernels;

// CurrentLimbKernels returns the first table of kLimbKernels that this processor runs.
const LimbKernels& CurrentLimbKernels() noexcept;

}  // namespace mirolta
