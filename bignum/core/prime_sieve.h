// Which candidates of a search for primes have small divisors.
#pragma once

#include "limb.h"
#include "small_primes.h"

namespace mirolta {

// PrimeSieve sieves windows of ascending numbers. Numbers with a divisor among the first kTablePrimes
// primes are no candidates. Those with a divisor p among the other small primes contradict the Fermat test
// unless a^(n-1) = 1 mod p for all bases a: a Fermat prime has a^(n-1) = 1 mod n, and so mod p. That
// condition is evaluated lazily.
// Source: sieve of Eratosthenes; Menezes, van Oorschot and Vanstone, Handbook of Applied
//         Cryptography, 4.4.
class PrimeSieve {
 public:
  // The first window begins at start.
  // Shapes: start[n] != 0
  PrimeSieve(const Limb* start, size_t n) noexcept;
  ~PrimeSieve() { WipeMemory(this, sizeof *this); }

  // The numbers of a window have the offsets from 0 to Size() - 1.
  uint32_t Size() const { return window_; }
  void NextWindow() noexcept;

  bool IsCandidate(uint32_t offset) const { return divisor_[offset] != kTableDivisor; }

  // Contradicts returns whether a small divisor shows that a candidate fails the Fermat test.
  // Shapes: candidate[n]: the number at the offset
  bool Contradicts(uint32_t offset, const Limb* candidate, size_t n) const noexcept;

 private:
  static constexpr uint32_t kMostWindow = 8192;
  static constexpr uint16_t kTableDivisor = 1;

  void FindResidues(const Limb* start, size_t n);

  SmallPrime end_;  // the first prime that does not sieve
  uint32_t window_;
  uint16_t first_[kSmallPrimeCount];  // offset of the first multiple in the next window
  // For each offset 0, kTableDivisor, or another small prime that divides the candidate.
  uint16_t divisor_[kMostWindow];
};

}  // namespace mirolta
