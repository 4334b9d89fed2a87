#include "seam/entropy_generator.h"

#include "seam/random.h"

namespace mirolta {

bool EntropyGenerator::Fill(uint32_t count) noexcept {
  used_ = kPoolSize;
  forks_ = ForkCount();
  if (!SystemEntropy(pool_ + (kPoolSize - count), count)) return false;
  used_ = kPoolSize - count;
  return true;
}

bool EntropyGenerator::Seed(uint32_t seed) noexcept {
  sequence_ = seed;
  return WatchForks() && Fill(kFirstSize);
}

uint32_t EntropyGenerator::Next() noexcept {
  // Seed has succeeded, so there is entropy. If it fails now, no byte of the pool may be used
  // twice.
  if ((used_ == kPoolSize || forks_ != ForkCount()) && !Fill(kPoolSize)) __builtin_trap();
  uint32_t entropy = 0;
  for (int i = 0; i < 4; ++i) {
    entropy = entropy << 8 | pool_[used_];
    pool_[used_++] = 0;
  }
  // XOR with a known sequence preserves the entropy.
  sequence_ = sequence_ * 1664525u + 1013904223u;
  return (entropy ^ sequence_ >> 8) & 0x7FFFFFFFu;
}

}  // namespace mirolta
