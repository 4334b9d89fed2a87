// The search for long primes, shared by threads.
#pragma once

#include "prime_sieve.h"

namespace mirolta {

// SearchOnThreads replaces start by the first number from it on that passes FermatTest and that the sieve, whose
// window begins there, does not refuse.
// Shapes: start[n], start[n - 1] = 0 for the carry; threads from 1 to kMostThreads
// Errors: false if memory runs out; start is then unspecified.
// Time:   depends on the value.
[[nodiscard]] bool SearchOnThreads(Limb* start, size_t n, PrimeSieve* sieve,
                                   size_t threads) noexcept;

}  // namespace mirolta
