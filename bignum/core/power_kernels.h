// The kernels that raise to a power modulo an odd number.
#pragma once

#include "limb.h"

namespace mirolta {

// PowerFunction: z := x^e mod m.
// Shapes: x[n] < m, e[en] != 0, m[n] odd and above 1, m[n - 1] != 0, z[n].
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
using PowerFunction = bool (*)(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                               size_t n);

// PowerMethod: a PowerFunction and the lengths of modulus that it is for.
struct PowerMethod {
  size_t least_bits;
  size_t most_bits;
  PowerFunction function;
};

extern const KernelList<const PowerMethod*> kPowerKernels;

// ChoosePower returns the first method of kPowerKernels for that modulus and a processor with
// `features`.
const PowerMethod& ChoosePower(size_t modulus_bits, uint32_t features) noexcept;

}  // namespace mirolta
