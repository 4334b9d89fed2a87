// Powers modulo an odd number by Montgomery multiplication.
#pragma once

#include "limb.h"

namespace mirolta {

// MontgomeryPower: z := x^e mod m, by a sliding window over Montgomery products.
// Shapes: x[n] < m, e[en] != 0, m[n] odd and above 1, m[n - 1] != 0, z[n].
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 14.85 and 14.94.
[[nodiscard]] bool MontgomeryPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                                   size_t n) noexcept;

}  // namespace mirolta
