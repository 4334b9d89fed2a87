// Powers modulo an odd number with products of digits of 52 bits.
#pragma once

#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

// Measured: below, products of limbs are faster. Above, no product of digits is compiled.
inline constexpr size_t kRadix52PowerLeastBits = 520;
inline constexpr size_t kRadix52PowerMostBits =
    kRadix52MostVectors * kRadix52PerVector * kRadix52Bits - 2;

// Radix52Power is a PowerFunction for moduli of 51 to kRadix52PowerMostBits bits.
[[nodiscard]] bool Radix52Power(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                                size_t n) noexcept;

}  // namespace mirolta

#endif
