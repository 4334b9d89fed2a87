// The Fermat test of one number.
#pragma once

#include "limb.h"

namespace mirolta {

// The bases of the test after 2.
inline constexpr Limb kOtherBases[] = {3, 5, 7};
inline constexpr size_t kOtherBaseCount = sizeof kOtherBases / sizeof kOtherBases[0];

// TwoToPowerIsOne sets *result to whether 2^e mod m is 1.
// Shapes: e[en] != 0, m[n] odd and above 1, m[n - 1] != 0.
// Errors: false if memory runs out.
// Time:   depends on the values.
[[nodiscard]] bool TwoToPowerIsOne(bool* result, const Limb* e, size_t en, const Limb* m,
                                   size_t n) noexcept;

// FermatTest sets *result to whether a^(m - 1) mod m is 1 for a = 2, 3, 5 and 7.
// Shapes: m[n] != 0, m[n - 1] != 0; spare[n].
// Errors: false if memory runs out; *result is unchanged.
// Time:   depends on the values.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 4.9.
[[nodiscard]] bool FermatTest(bool* result, const Limb* m, size_t n, Limb* spare) noexcept;

}  // namespace mirolta
