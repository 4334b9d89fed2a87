// Residues of numbers times a power of two, which enter the Montgomery representations of vectors.
#pragma once

#include "limb.h"

namespace mirolta {

// ShiftedResidue: z := x * 2^bits mod m.
// Shapes: x[n], m[n], m[n - 1] != 0, z[n].
// Alias:  z may be x.
// Errors: false if memory runs out.
[[nodiscard]] bool ShiftedResidue(Limb* z, const Limb* x, size_t bits, const Limb* m,
                                  size_t n) noexcept;

}  // namespace mirolta
