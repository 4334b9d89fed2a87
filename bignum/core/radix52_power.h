// Powers modulo an odd number in radix 2^52.
#pragma once

#include "radix52_ifma.h"
#include "secret_power.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

// Below the least, products of limbs are faster, as measured. Above the most, there is no
// Radix52Product.
inline constexpr size_t kRadix52PowerLeastBits = 385;
inline constexpr size_t kRadix52PowerMostBits =
    kRadix52MostVectors * kRadix52PerVector * kRadix52Bits - kRadix52Spare;

// Radix52Power: z := x^e mod m, by a sliding window over Montgomery products in radix 2^52.
// Shapes: x[n] < m, e[en] != 0, m[n] odd, of 51 to kRadix52PowerMostBits bits, z[n].
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 14.85; Gueron and
//         Krasnov 2016 for the products.
[[nodiscard]] bool Radix52Power(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                                size_t n) noexcept;

// Radix52SecretPower and Radix52SecretPair: one and two powers, by the rules of RaiseToSecrets. For
// two, the products are interleaved, which in 32-bit mode would need more registers than there are.
// Shapes: as for Radix52Power, for two of up to kRadix52PairMostBits bits.
// Errors: false if memory runs out.
// Time:   as for RaiseToSecrets.
[[nodiscard]] bool Radix52SecretPower(const SecretPower* powers) noexcept;
  #if MIROLTA_KERNELS_FOR(X86_64)
inline constexpr size_t kRadix52PairLeastBits = 260;
inline constexpr size_t kRadix52PairMostBits =
    kRadix52MostPairVectors * kRadix52PerVector * kRadix52Bits - kRadix52Spare;
[[nodiscard]] bool Radix52SecretPair(const SecretPower* powers) noexcept;
  #endif

}  // namespace mirolta

#endif
