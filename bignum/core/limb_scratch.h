// Working memory of the number operations, wiped when it goes.
#pragma once

#include "limb.h"

namespace mirolta {

// LimbScratch holds count limbs of unspecified content: inside itself when they are few, else from
// the heap.
class LimbScratch {
 public:
  explicit LimbScratch(CheckedSize count) noexcept;
  ~LimbScratch() {
    if (limbs_ == nullptr) return;
    WipeMemory(limbs_, count_ * sizeof(Limb));
    if (limbs_ != inside_) delete[] limbs_;
  }
  LimbScratch(const LimbScratch&) = delete;
  LimbScratch& operator=(const LimbScratch&) = delete;

  // Null if the heap had nothing to give, or the count is too large.
  Limb* Get() const { return limbs_; }

 private:
  static constexpr size_t kInside = 96;

  Limb* limbs_;
  size_t count_;
  Limb inside_[kInside];
};

}  // namespace mirolta
