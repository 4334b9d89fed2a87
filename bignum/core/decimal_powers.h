// The powers of ten at which long decimal numbers are split.
#pragma once

#include "limb.h"

namespace mirolta {

// DecimalLimb: the most decimal digits of which all values fit a limb, a chunk, and ten to that
// power.
inline constexpr uint32_t kDecimalDigits = kLimbBits == 64 ? 19 : 9;
inline constexpr Limb kDecimalPower =
    static_cast<Limb>(kLimbBits == 64 ? uint64_t{10000000000000000000u} : uint64_t{1000000000u});

// DecimalPower: limbs[size] * B^zeros. Three of ten limbs of a power of ten are zeros at its end.
struct DecimalPower {
  const Limb* limbs;
  size_t size;
  size_t zeros;
};

// DecimalPowers are kDecimalPower^(leaf * 2^i) for i below levels: where a number of chunks is
// split in halves, levels times, into leaves of at most leaf chunks.
class DecimalPowers {
 public:
  DecimalPowers() = default;
  ~DecimalPowers() { delete[] limbs_; }
  DecimalPowers(const DecimalPowers&) = delete;
  DecimalPowers& operator=(const DecimalPowers&) = delete;

  // Makes the powers for numbers of that many chunks, leaves having at most most_leaf of them, and
  // chunks more than that. False if memory runs out.
  [[nodiscard]] bool Make(size_t chunks, size_t most_leaf) noexcept;

  size_t Leaf() const { return leaf_; }
  size_t Levels() const { return levels_; }
  const DecimalPower& operator[](size_t i) const { return powers_[i]; }

 private:
  static constexpr size_t kMostLevels = 40;

  size_t leaf_ = 0;
  size_t levels_ = 0;
  Limb* limbs_ = nullptr;
  DecimalPower powers_[kMostLevels] = {};
};

}  // namespace mirolta
