// The primes that fit 16 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

// The first kTablePrimes primes, 2 to 1223, divide no number that a prime search finds.
inline constexpr size_t kTablePrimes = 200;
inline constexpr size_t kSmallPrimeCount = 6542;

// SmallPrimeTable: all primes below 65536 in ascending order.
struct SmallPrimeTable {
  uint16_t primes[kSmallPrimeCount];
};
extern const SmallPrimeTable kSmallPrimes;

}  // namespace mirolta
