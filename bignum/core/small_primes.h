// The primes that fit 16 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

// The first kTablePrimes primes, 2 to 1223, divide no number that a prime search finds.
inline constexpr size_t kTablePrimes = 200;
inline constexpr size_t kSmallPrimeCount = 6542;

// PrimeGaps: for each prime below 65536, in ascending order, its distance from the one before. A gap
// fits a byte, a prime does not.
struct PrimeGaps {
  uint8_t gaps[kSmallPrimeCount];
};
extern const PrimeGaps kPrimeGaps;

// SmallPrime walks the primes in both directions. Beyond the last one its value is that of the last.
class SmallPrime {
 public:
  // The first: 2.
  SmallPrime() noexcept : value_(kPrimeGaps.gaps[0]) {}

  // How many primes are less.
  size_t Index() const noexcept { return index_; }
  uint32_t Value() const noexcept { return value_; }

  void Next() noexcept {
    if (++index_ < kSmallPrimeCount) value_ += kPrimeGaps.gaps[index_];
  }
  // Not of the first.
  void Previous() noexcept {
    if (index_ < kSmallPrimeCount) value_ -= kPrimeGaps.gaps[index_];
    --index_;
  }

 private:
  size_t index_ = 0;
  uint32_t value_;
};

}  // namespace mirolta
