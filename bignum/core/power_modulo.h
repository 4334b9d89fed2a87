// Powers modulo an odd number, modulo a power of two, and modulo any number made of both.
#pragma once

#include "limb.h"

namespace mirolta {

// PowerFunction: z := x^e mod m for odd m above 1.
// Shapes: x[n] below m, e[en] != 0, m[n], z[n] apart from all.
// Errors: false if memory runs out. Time: depends on the values.
using PowerFunction = bool (*)(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                               size_t n);

// PowerMethod: a PowerFunction and the moduli that it is for.
struct PowerMethod {
  size_t least_bits;
  size_t most_bits;
  PowerFunction function;
};

extern const KernelList<const PowerMethod*> kPowerKernels;

// ChoosePower returns the first method of kPowerKernels for that modulus and a processor with
// `features`.
const PowerMethod& ChoosePower(size_t modulus_bits, uint32_t features) noexcept;

// MontgomeryPower is the portable row: a sliding window over products in Montgomery's form.
[[nodiscard]] bool MontgomeryPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                                  size_t n) noexcept;

// PowerModulo: z := x^e mod m, for any m above 1 and any e above 0, without zero limbs at the top.
// Shapes: x[xn], e[en], m[n], z[n]; z overlaps nothing. Errors: false if memory runs out.
[[nodiscard]] bool PowerModulo(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en,
                               const Limb* m, size_t n) noexcept;

// TwoToPowerIsOne tells whether 2^e mod m is 1, for odd m above 1 without zero limbs at the top.
// Sets *result; false if memory runs out.
[[nodiscard]] bool TwoToPowerIsOne(bool* result, const Limb* e, size_t en, const Limb* m,
                                   size_t n) noexcept;

}  // namespace mirolta
