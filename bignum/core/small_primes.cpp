#include "small_primes.h"

namespace mirolta {

namespace {

// The sieve of Eratosthenes, at compile time.
constexpr PrimeGaps Sieve() {
  constexpr uint32_t kLimit = 65536;
  bool composite[kLimit] = {};
  PrimeGaps table = {};
  size_t count = 0;
  uint32_t before = 0;
  for (uint32_t n = 2; n < kLimit; ++n) {
    if (composite[n]) continue;
    table.gaps[count++] = static_cast<uint8_t>(n - before);
    before = n;
    for (uint32_t multiple = n * 2; multiple < kLimit; multiple += n) composite[multiple] = true;
  }
  return table;
}

}  // namespace

constexpr PrimeGaps kPrimeGaps = Sieve();

namespace {

constexpr uint32_t PrimeAt(size_t index) {
  uint32_t prime = 0;
  for (size_t i = 0; i <= index; ++i) prime += kPrimeGaps.gaps[i];
  return prime;
}
static_assert(PrimeAt(kTablePrimes - 1) == 1223);
static_assert(PrimeAt(kSmallPrimeCount - 1) == 65521);

}  // namespace

}  // namespace mirolta
