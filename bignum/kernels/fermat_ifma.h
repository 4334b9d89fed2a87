// Fermat tests of eight numbers at once in radix 2^52: vector j holds digit j of each number.
#pragma once

#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

inline constexpr size_t kLanes = 8;

// FermatLanes: the state of a Fermat test of eight odd numbers, a lane each.
// Shapes: count radix-2^52 digits; base <= 7 and 4 * base^2 * m <= 2^(52 count) in each lane.
struct FermatLanes {
  const Digit52* m;        // [8 count] the moduli
  const Digit52* inverse;  // [8] -1 / m mod 2^52
  const Digit52* base;     // [8]
  size_t bits;             // low exponent bits still to process
  Digit52* power;          // [8 count] base^(m >> bits) * 2^(52 count), below m; destroyed
};

// FermatLanesTest exponentiates by the remaining low bits of m - 1 and returns the set of lanes
// where base^(m - 1) mod m is 1.
// Time:   depends on the counts only.
// Source: Gueron and Krasnov, Accelerating big integer arithmetic using Intel IFMA extensions,
//         2016.
using FermatLanesTest = uint32_t (*)(const FermatLanes& lanes);

inline constexpr size_t kFermatLeastCount = 3;
inline constexpr size_t kFermatMostCount = 24;

// FermatLanesCount rounds a count of radix-2^52 digits up to one with a test: any up to 10, in 32-bit mode up to 6,
// even ones above. Each test is unrolled and so has code of its own.
constexpr size_t FermatLanesCount(size_t count) {
  constexpr size_t kAnyUpTo = MIROLTA_KERNELS_FOR(X86_64) ? 10 : 6;
  return count <= kAnyUpTo ? count : count + count % 2;
}

// FermatLanesTestFor returns the test for numbers of count digits, a result of FermatLanesCount
// from kFermatLeastCount to kFermatMostCount.
FermatLanesTest FermatLanesTestFor(size_t count) noexcept;

}  // namespace mirolta

#endif
