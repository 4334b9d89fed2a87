// Montgomery arithmetic modulo an odd number: x is represented by x * B^n mod m.
#pragma once

#include "limb.h"

namespace mirolta {

// MontgomeryModulus: an odd modulus and its inverse. It does not own m.
// Source: Montgomery, Modular multiplication without trial division, 1985.
struct MontgomeryModulus {
  const Limb* m;
  size_t n;
  Limb inverse;  // -1 / m mod B
};

// LimbInverse returns 1 / m mod B.
// Shapes: m odd.
Limb LimbInverse(Limb m) noexcept;

// PrepareMontgomery computes -1 / m mod B.
// Shapes: m[n] odd, n >= 1.
MontgomeryModulus PrepareMontgomery(const Limb* m, size_t n) noexcept;

// MontgomeryScratch returns the limbs of scratch of MontgomeryMultiply and FromMontgomery.
CheckedSize MontgomeryScratch(size_t n) noexcept;

// MontgomeryMultiply: z := x * y / B^n mod m, by a kernel that interleaves product and reduction,
// else by a full product and a reduction.
// Shapes: x[n], y[n], z[n] < m, scratch[MontgomeryScratch(n)].
// Alias:  z may be x or y; x may be y, and a square costs less; scratch overlaps nothing.
// Source: Koc, Acar and Kaliski, Analyzing and comparing Montgomery multiplication algorithms,
//         1996.
void MontgomeryMultiply(Limb* z, const Limb* x, const Limb* y, const MontgomeryModulus& modulus,
                        Limb* scratch) noexcept;

// FromMontgomery: z := x / B^n mod m.
// Shapes: x[n], z[n] < m, scratch[MontgomeryScratch(n)].
// Alias:  z may be x; scratch overlaps nothing.
void FromMontgomery(Limb* z, const Limb* x, const MontgomeryModulus& modulus,
                    Limb* scratch) noexcept;

// ToMontgomery: z := x * B^n mod m.
// Shapes: x[count], z[n], m[n - 1] != 0, m and n of the modulus.
// Alias:  z may overlap x.
// Errors: false if memory runs out.
[[nodiscard]] bool ToMontgomery(Limb* z, const Limb* x, size_t count,
                                const MontgomeryModulus& modulus) noexcept;

}  // namespace mirolta
