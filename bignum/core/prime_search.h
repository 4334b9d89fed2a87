// The search for primes, on limbs.
#pragma once

#include "limb.h"

namespace mirolta {

// SearchPrime replaces start by the first number from it on that passes the Fermat test to the bases 2, 3, 5
// and 7 and has no divisor among the first kTablePrimes primes: the same one for any number of threads,
// which share the tests of long numbers.
// Shapes: start[n] above those primes, start[n - 1] = 0 for the carry; threads from 1 to kMostThreads
// Errors: false if memory runs out; start is then unspecified.
// Time:   depends on the value.
[[nodiscard]] bool SearchPrime(Limb* start, size_t n, size_t threads) noexcept;

}  // namespace mirolta
