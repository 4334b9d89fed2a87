// Scratch memory of the number operations, wiped before it is freed.
#pragma once

#include "limb.h"
#include "seam/small_stack.h"

namespace mirolta {

// LimbScratch owns count limbs of unspecified content: inside the object if they are few, else on
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

  // Null if memory ran out or the count is too large.
  Limb* Get() const { return limbs_; }

 private:
  static constexpr size_t kInside = kSmallStack ? 2 : 96;

  Limb* limbs_;
  size_t count_;
  Limb inside_[kInside];
};

}  // namespace mirolta
