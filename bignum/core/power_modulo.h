// Powers modulo any number.
#pragma once

#include "limb.h"

namespace mirolta {

// PowerModulo: z := x^e mod m.
// Shapes: x[xn], e[en] != 0, m[n] > 1, m[n - 1] != 0, z[n].
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
// Source: Koc, Montgomery reduction with even modulus, 1994.
[[nodiscard]] bool PowerModulo(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en,
                               const Limb* m, size_t n) noexcept;

}  // namespace mirolta
