// Scratch memory of computations in radix 2^52 and 2^27, wiped before it is freed.
#pragma once

#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

// Radix52Scratch owns count digits of unspecified content, at a multiple of 64 bytes: vectors
// that cross no cache line load twice as fast.
class Radix52Scratch {
 public:
  explicit Radix52Scratch(CheckedSize count) noexcept
      : count_((count + kRadix52PerVector).Value()),
        memory_(NewArray<Digit52>(count + kRadix52PerVector)) {}
  ~Radix52Scratch() {
    if (memory_ == nullptr) return;
    WipeMemory(memory_, count_ * sizeof(Digit52));
    delete[] memory_;
  }
  Radix52Scratch(const Radix52Scratch&) = delete;
  Radix52Scratch& operator=(const Radix52Scratch&) = delete;

  // Null if memory ran out or the count is too large.
  Digit52* Get() const {
    if (memory_ == nullptr) return nullptr;
    const size_t beyond =
        reinterpret_cast<uintptr_t>(memory_) / sizeof(Digit52) % kRadix52PerVector;
    return memory_ + (kRadix52PerVector - beyond);
  }

 private:
  size_t count_;
  Digit52* memory_;
};

}  // namespace mirolta

#endif
