// The powers of ten at which divide-and-conquer decimal conversion splits.
#pragma once

#include "limb.h"

namespace mirolta {

// A chunk is the most decimal digits whose every value fits a limb: kDecimalDigits of them, with
// kDecimalPower = 10^kDecimalDigits.
inline constexpr uint32_t kDecimalDigits = kLimbBits == 64 ? 19 : 9;
inline constexpr Limb kDecimalPower =
    static_cast<Limb>(kLimbBits == 64 ? uint64_t{10000000000000000000u} : uint64_t{1000000000u});

// DecimalPower: limbs[size] * B^zeros. About three tenths of a power of ten's limbs are trailing
// zeros.
struct DecimalPower {
  const Limb* limbs;
  size_t size;
  size_t zeros;
};

// DecimalPowers are kDecimalPower^(leaf * 2^i) for i < levels: halving levels times splits a number
// of chunks into leaves of at most leaf chunks.
class DecimalPowers {
 public:
  DecimalPowers() = default;
  ~DecimalPowers() {
    delete[] limbs_;
    delete[] powers_;
  }
  DecimalPowers(const DecimalPowers&) = delete;
  DecimalPowers& operator=(const DecimalPowers&) = delete;

  // Make computes the powers for numbers of that many chunks, with leaves of at most most_leaf
  // chunks, most_leaf < chunks.
  // Errors: false if memory runs out.
  [[nodiscard]] bool Make(size_t chunks, size_t most_leaf) noexcept;

  size_t Leaf() const { return leaf_; }
  size_t Levels() const { return levels_; }
  const DecimalPower& operator[](size_t i) const { return powers_[i]; }

 private:
  size_t leaf_ = 0;
  size_t levels_ = 0;
  Limb* limbs_ = nullptr;
  DecimalPower* powers_ = nullptr;
};

}  // namespace mirolta
