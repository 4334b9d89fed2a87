// Powers modulo an odd number in radix 2^27.
#pragma once

#include "radix27.h"
#include "secret_power.h"

#if MIROLTA_KERNELS_FOR(X86_32)

namespace mirolta {

// From eight limbs on, where it takes four fifths of the time of products of limbs with AVX2, as measured. Numbers
// much shorter have fewer digits than are selected at once.
inline constexpr size_t kRadix27PowerLeastBits = 7 * 32 + 1;
inline constexpr size_t kRadix27PowerMostBits = kRadix27MostDigits * kRadix27Bits - kRadix27Spare;
static_assert(Radix27Count(kRadix27PowerLeastBits) >= kRadix27LeastDigits);

// Radix27Power: z := x^e mod m, by a sliding window over products of these kernels.
// Shapes: x[n] < m, e[en] != 0, m[n] odd, of kRadix27PowerLeastBits to kRadix27PowerMostBits bits, z[n].
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the values.
[[nodiscard]] bool Radix27Power(const Radix27Kernels& kernels, Limb* z, const Limb* x,
                                const Limb* e, size_t en, const Limb* m, size_t n) noexcept;

// Radix27SecretPower: one power, by the rules of RaiseToSecrets.
// Shapes: as for Radix27Power.
// Errors: false if memory runs out.
// Time:   as for RaiseToSecrets.
[[nodiscard]] bool Radix27SecretPower(const Radix27Kernels& kernels,
                                      const SecretPower& power) noexcept;

}  // namespace mirolta

#endif
