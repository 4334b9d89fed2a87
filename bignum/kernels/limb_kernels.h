// The loops over limbs that everything else is made of, as one table a processor kind.
#pragma once

#include "limb.h"

namespace mirolta {

// LimbKernels: one implementation of every loop. Limbs are least significant first; B is the limb
// base. Unless said otherwise an output may be one of the inputs or lies apart from it, counts may
// be 0, and time depends on the counts only.
struct LimbKernels {
  // z := x + y, returns the carry. Shapes: x[n], y[n], z[n].
  Limb (*add)(Limb* z, const Limb* x, const Limb* y, size_t n);
  // z := x - y, returns the borrow. Shapes: x[n], y[n], z[n].
  Limb (*subtract)(Limb* z, const Limb* x, const Limb* y, size_t n);
  // z := x * y, returns the limb above. Shapes: x[n], z[n].
  Limb (*mul1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := z + x * y, returns the limb above. Shapes: x[n], z[n].
  Limb (*mul_add1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := z - x * y, returns what is missing above. Shapes: x[n], z[n].
  Limb (*mul_sub1)(Limb* z, const Limb* x, size_t n, Limb y);
  // z := x * y by rows. Shapes: x[m], y[n], z[m + n], m >= n >= 1; z overlaps neither.
  void (*multiply)(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n);
  // z := x * x by rows. Shapes: x[n], z[2n], n >= 1; z does not overlap x.
  void (*square)(Limb* z, const Limb* x, size_t n);
  // z := t / B^n mod m, below m. Shapes: t[2n] below m * B^n, destroyed; m[n] odd; z[n] apart from
  // t and m. inverse is -1 / m mod B.
  void (*reduce)(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse);
  // z := x * y / B^n mod m, below m, for the few n that this table has such code for; false for
  // others, with nothing written. Shapes: x[n], y[n], z[n] below m, m[n] odd.
  bool (*montgomery)(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n, Limb inverse);
};

extern const KernelList<const LimbKernels*> kLimbKernels;

// CurrentLimbKernels returns the first table of kLimbKernels that this processor runs.
const LimbKernels& CurrentLimbKernels() noexcept;

}  // namespace mirolta
