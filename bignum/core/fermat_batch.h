// Fermat tests of several numbers at once.
#pragma once

#include "limb.h"

namespace mirolta {

// FermatBatch tests up to Capacity() candidates at once, where the processor has IFMA.
class FermatBatch {
 public:
  // The largest capacity.
  static constexpr size_t kMost = 8;

  // bits: the candidates' greatest length.
  explicit FermatBatch(size_t bits) noexcept;

  // How many candidates one test takes; 0 if testing them one by one is as fast.
  size_t Capacity() const { return capacity_; }

  // Sets bit i of *passed where candidate i passes the Fermat test to bases[i].
  // Shapes: candidates[count * n], odd; bases[count], at most 7; count <= Capacity().
  // Errors: false if memory runs out.
  // Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 4.9.
  [[nodiscard]] bool Test(uint32_t* passed, const Limb* candidates, const Limb* bases, size_t count,
                          size_t n) const noexcept;

 private:
  size_t capacity_ = 0;
  size_t bits_;
};

}  // namespace mirolta
