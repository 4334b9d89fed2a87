// Fermat tests of several numbers at once.
#pragma once

#include "limb.h"

namespace mirolta {

// FermatBatch tests up to Capacity() numbers of one search together, where the processor can.
class FermatBatch {
 public:
  // No batch takes more.
  static constexpr size_t kMost = 8;

  // For numbers of at most that many bits.
  explicit FermatBatch(size_t bits) noexcept;

  // How many numbers one test takes; 0 if there is no faster way than one after another.
  size_t Capacity() const { return capacity_; }

  // Tests whether base[i]^(candidate - 1) mod candidate is 1 for each of count candidates, odd
  // numbers of n limbs, the i-th at candidates + i * n. Bases are at most 7. Sets bit i of *passed.
  // Errors: false if memory runs out.
  [[nodiscard]] bool Test(uint32_t* passed, const Limb* candidates, const Limb* bases, size_t count,
                          size_t n) const noexcept;

 private:
  size_t capacity_ = 0;
  size_t bits_;
};

}  // namespace mirolta
