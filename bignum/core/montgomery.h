// Arithmetic modulo an odd number in Montgomery's form: x stands for x * B^n mod m.
#pragma once

#include "limb.h"

namespace mirolta {

// MontgomeryModulus: an odd modulus of n limbs and the values derived from it. It borrows m.
// Source: Montgomery, Modular multiplication without trial division, 1985.
struct MontgomeryModulus {
  const Limb* m;
  size_t n;
  Limb inverse;  // -1 / m mod B
};

// PrepareMontgomery: m[n] odd, n >= 1.
MontgomeryModulus PrepareMontgomery(const Limb* m, size_t n) noexcept;

// MontgomeryScratch returns the limbs of working memory of the next operations.
CheckedSize MontgomeryScratch(size_t n) noexcept;

// MontgomeryMultiply: z := x * y / B^n mod m. Shapes: x[n], y[n], z[n] all below m. z may be x or
// y. Equal pointers x and y make a cheaper square.
void MontgomeryMultiply(Limb* z, const Limb* x, const Limb* y, const MontgomeryModulus& modulus,
                        Limb* scratch) noexcept;

// FromMontgomery: z := x / B^n mod m. Shapes: x[n], z[n]. z may be x.
void FromMontgomery(Limb* z, const Limb* x, const MontgomeryModulus& modulus,
                    Limb* scratch) noexcept;

// ToMontgomery: z := x * B^n mod m. Shapes: x[count], z[n], any value of x.
// Errors: false if memory runs out.
[[nodiscard]] bool ToMontgomery(Limb* z, const Limb* x, size_t count,
                                const MontgomeryModulus& modulus) noexcept;

}  // namespace mirolta
