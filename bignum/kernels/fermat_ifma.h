// Eight numbers side by side in digits of 52 bits: vector j is digit j of each.
#pragma once

#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

inline constexpr size_t kLanes = 8;

// FermatLanes: what a Fermat test of eight odd numbers works on. Each lane's base is at most 7, and
// 4 * base^2 * m <= 2^(52 count).
struct FermatLanes {
  const Limb* m;        // [8 count] the moduli
  const Limb* inverse;  // [8] -1 / m mod 2^52
  const Limb* base;     // [8]
  size_t bits;          // exponent bits still to work in
  Limb* power;          // [8 count] base^(m >> bits) * 2^(52 count), below m; destroyed
};

// FermatLanesTest works the lowest bits of m - 1 into the powers and returns the set of lanes whose
// power base^(m - 1) is 1.
// Time: depends on the counts only.
using FermatLanesTest = uint32_t (*)(const FermatLanes& lanes);

inline constexpr size_t kFermatLeastCount = 3;
inline constexpr size_t kFermatMostCount = 24;

// FermatLanesCount rounds a count of digits up to one that there is a test for: every count of up to 10,
// even ones above. Each test is unrolled, so each is code of its own.
constexpr size_t FermatLanesCount(size_t count) {
  return count <= 10 ? count : count + count % 2;
}

// FermatLanesTestFor returns the test for numbers of count digits, a value of FermatLanesCount from
// kFermatLeastCount to kFermatMostCount.
FermatLanesTest FermatLanesTestFor(size_t count) noexcept;

}  // namespace mirolta

#endif
