// Random numbers from the system's entropy.
#pragma once

#include <cstdint>

namespace mirolta {

// EntropyGenerator returns numbers made of four bytes of system entropy, mixed with a sequence that
// starts at the seed. Each byte is used once and then cleared. After a fork the child draws new
// entropy. It has no lock: each thread has its own.
// Source: the sequence is the linear congruential generator of Numerical Recipes, section 7.1.
class EntropyGenerator {
 public:
  // Draws entropy and starts the sequence.
  // Errors: false if the system has no entropy or cannot detect forks.
  [[nodiscard]] bool Seed(uint32_t seed) noexcept;

  // The next number, 0..0x7FFFFFFF, after a successful Seed. The process traps if the system no
  // longer has entropy.
  uint32_t Next() noexcept;

 private:
  static constexpr uint32_t kPoolSize = 256;
  // What a seed draws: callers that seed and draw a few numbers wait half as long.
  static constexpr uint32_t kFirstSize = 64;

  // Draws the last count bytes of the pool.
  bool Fill(uint32_t count) noexcept;

  uint32_t sequence_ = 0;
  uint32_t used_ = kPoolSize;  // bytes of the pool that are spent
  uint32_t forks_ = 0;         // ForkCount() when the pool was filled
  uint8_t pool_[kPoolSize] = {};
};

}  // namespace mirolta
