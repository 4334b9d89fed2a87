// The primes that fit 16 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

// The first kTablePrimes primes, 2 to 1223, decide which candidates a prime search tests.
inline constexpr size_t kTablePrimes = 200;
inline constexpr size_t kSmallPrimeCount = 6542;

// SmallPrimes: all primes below 65536 in order.
struct SmallPrimeTable {
  uint16_t primes[kSmallPrimeCount];
};
extern const SmallPrimeTable kSmallPrimes;

}  // namespace mirolta
