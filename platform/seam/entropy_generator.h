// Random numbers from the system's entropy.
#pragma once

#include <cstdint>

namespace mirolta {

// EntropyGenerator gives numbers made of four bytes of system entropy each, mixed with a sequence
// that the seed starts. Every byte goes into one number and is cleared then. What a process had drawn
// before it forked is the parent's: the child draws anew. One for each thread; it has no lock.
class EntropyGenerator {
 public:
  // Draws entropy and starts the sequence.
  // Errors: false if the system has no entropy to give, or cannot tell of forks.
  [[nodiscard]] bool Seed(uint32_t seed) noexcept;

  // The next number, 0..0x7FFFFFFF, after a Seed that succeeded. The process ends if the system gave
  // entropy then and has none now.
  uint32_t Next() noexcept;

 private:
  static constexpr uint32_t kPoolSize = 256;

  bool Fill() noexcept;

  uint32_t sequence_ = 0;
  uint32_t used_ = kPoolSize;  // bytes of the pool that are spent
  uint32_t forks_ = 0;         // ForkCount() when the pool was filled
  uint8_t pool_[kPoolSize] = {};
};

}  // namespace mirolta
