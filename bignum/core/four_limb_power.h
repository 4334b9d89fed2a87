// Powers modulo odd numbers of four limbs.
#pragma once

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

inline constexpr size_t kFourLimbPowerLeastBits = 3 * kLimbBits + 1;
inline constexpr size_t kFourLimbPowerMostBits = 4 * kLimbBits;

// FourLimbPower: z := x^e mod m, by fixed windows over products with code of their own.
// Shapes: x[n] < m, e[en] != 0, m[n] odd, of kFourLimbPowerLeastBits to kFourLimbPowerMostBits bits, z[n],
//         n = 4.
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 14.82.
[[nodiscard]] bool FourLimbPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                                 size_t n) noexcept;

}  // namespace mirolta

#endif
