#include "small_primes.h"

namespace mirolta {

namespace {

// The sieve of Eratosthenes, at compile time.
constexpr SmallPrimeTable Sieve() {
  constexpr uint32_t kLimit = 65536;
  bool composite[kLimit] = {};
  SmallPrimeTable table = {};
  size_t count = 0;
  for (uint32_t n = 2; n < kLimit; ++n) {
    if (composite[n]) continue;
    table.primes[count++] = static_cast<uint16_t>(n);
    for (uint32_t multiple = n * 2; multiple < kLimit; multiple += n) composite[multiple] = true;
  }
  return table;
}

}  // namespace

constexpr SmallPrimeTable kSmallPrimes = Sieve();

static_assert(kSmallPrimes.primes[kTablePrimes - 1] == 1223);
static_assert(kSmallPrimes.primes[kSmallPrimeCount - 1] == 65521);

}  // namespace mirolta
