#include "prime_sieve.h"

#include <initializer_list>

#include "divide.h"
#include "limb_basics.h"

namespace mirolta {

namespace {

// The first prime that does not sieve: a residue costs as much as the exponentiations that it saves.
SmallPrime BreakEvenPrime(size_t bits) {
  const size_t limit = bits * bits / 16;
  SmallPrime prime;
  while (prime.Index() < kTablePrimes) prime.Next();
  while (prime.Index() < kSmallPrimeCount && prime.Value() < limit) prime.Next();
  return prime;
}

// WindowFor returns how many offsets are sieved at a time: about six times the mean prime gap.
uint32_t WindowFor(size_t bits, uint32_t most) {
  const size_t window = bits * 4 < 512 ? 512 : bits * 4;
  return window < most ? static_cast<uint32_t>(window) : most;
}

// SmallPowerModulo returns base^e mod p, p < 2^16.
uint32_t SmallPowerModulo(uint32_t base, uint32_t e, uint32_t p) {
  uint32_t result = 1;
  for (base %= p; e != 0; e >>= 1) {
    if ((e & 1) != 0) result = result * base % p;
    base = base * base % p;
  }
  return result % p;
}

}  // namespace

PrimeSieve::PrimeSieve(const Limb* start, size_t n) noexcept
    : end_(BreakEvenPrime(LimbBits(start, n))),
      window_(WindowFor(LimbBits(start, n), kMostWindow)) {
  FindResidues(start, n);
  NextWindow();
}

void PrimeSieve::FindResidues(const Limb* start, size_t n) {
  for (SmallPrime prime; prime.Index() < end_.Index();) {
    // Primes whose product fits a limb share one division.
    Limb product = 1;
    SmallPrime end = prime;
    for (; end.Index() < end_.Index() && product <= kLimbMax / end.Value(); end.Next()) {
      product = static_cast<Limb>(product * end.Value());
    }
    const Limb residue = ModLimb(start, n, PrepareDivisor(product));
    for (; prime.Index() < end.Index(); prime.Next()) {
      const uint32_t p = prime.Value();
      const uint32_t r = static_cast<uint32_t>(residue % p);
      first_[prime.Index()] = static_cast<uint16_t>(r == 0 ? 0 : p - r);
    }
  }
}

void PrimeSieve::NextWindow() noexcept {
  for (uint32_t offset = 0; offset < window_; ++offset) divisor_[offset] = 0;
  // The table's primes mark last: they overrule the others.
  SmallPrime prime = end_;
  for (size_t i = end_.Index(); i-- != 0;) {
    prime.Previous();
    const uint32_t p = prime.Value();
    const uint16_t mark = i < kTablePrimes ? kTableDivisor : static_cast<uint16_t>(p);
    uint32_t offset = first_[i];
    for (; offset < window_; offset += p) divisor_[offset] = mark;
    // Relative to the next window; offset - window_ < p.
    first_[i] = static_cast<uint16_t>(offset - window_);
  }
}

bool PrimeSieve::Contradicts(uint32_t offset, const Limb* candidate, size_t n) const noexcept {
  const uint32_t p = divisor_[offset];
  if (p == 0) return false;
  // (candidate - 1) mod (p - 1)
  const uint32_t residue = static_cast<uint32_t>(ModLimb(candidate, n, PrepareDivisor(p - 1)));
  const uint32_t e = (residue + p - 2) % (p - 1);
  for (const uint32_t base : {2u, 3u, 5u, 7u}) {
    if (SmallPowerModulo(base, e, p) != 1) return true;
  }
  return false;
}

}  // namespace mirolta
