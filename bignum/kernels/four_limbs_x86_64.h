// Montgomery multiplication modulo odd numbers of four limbs, with a prepared modulus.
#pragma once

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

// FourLimbModulus: an odd modulus of four limbs as FourLimbProduct takes it.
// Source: Orup, Simplifying quotient determination in high-radix modular multiplication, 1995, for the
//         multiple.
struct FourLimbModulus {
  Limb m[4];
  Limb multiple[4];  // (m * inverse + 1) / B, at most m
  Limb inverse;      // -1 / m mod B
};

// Above this top limb, a product is not below m.
inline constexpr Limb kFourLimbsMostTop = kLimbMax - 4;

// PrepareFourLimbs returns that of m.
// Shapes: m[4] odd, inverse = -1 / m mod B.
FourLimbModulus PrepareFourLimbs(const Limb* m, Limb inverse) noexcept;

// FourLimbProduct: z := x^(2^squares) * y mod m, as Montgomery products. It needs kFeatureBmi2Adx.
// Shapes: x[4], y[4], z[4] < m, m[3] of at most kFourLimbsMostTop.
// Alias:  z may be x or y; x may be y.
// Time:   depends on squares only.
// Source: Koc, Acar and Kaliski, Analyzing and comparing Montgomery multiplication algorithms, 1996, CIOS.
void FourLimbProduct(Limb* z, const Limb* x, const Limb* y, const FourLimbModulus& modulus,
                     size_t squares) noexcept;

}  // namespace mirolta

#endif
