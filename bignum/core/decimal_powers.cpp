#include "decimal_powers.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"

namespace mirolta {

namespace {

// x * B^zeros without leading and trailing zero limbs.
// Shapes: x[n] != 0.
DecimalPower Trimmed(const Limb* x, size_t n, size_t zeros) {
  // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): kernels have written x.
  for (; *x == 0; ++x, --n) ++zeros;
  return {x, SignificantLimbs(x, n), zeros};
}

}  // namespace

bool DecimalPowers::Make(size_t chunks, size_t most_leaf) noexcept {
  leaf_ = chunks;
  for (; leaf_ > most_leaf; leaf_ = (leaf_ + 1) / 2) ++levels_;
  const size_t powers = size_t{1} << levels_;
  // Power i fits leaf * 2^i limbs, since a chunk fits a limb; all of them fit this.
  limbs_ = NewArray<Limb>(CheckedSize(leaf_) * CheckedSize(powers));
  // One at least, which leaves need; levels are not 0 since most_leaf < chunks.
  powers_ = NewArray<DecimalPower>(CheckedSize(levels_));
  if (limbs_ == nullptr || powers_ == nullptr) return false;
  limbs_[0] = kDecimalPower;
  for (size_t i = 1; i < leaf_; ++i) {
    limbs_[i] = CurrentLimbKernels().mul1(limbs_, limbs_, i, kDecimalPower);
  }
  powers_[0] = Trimmed(limbs_, leaf_, 0);
  Limb* to = limbs_ + leaf_;
  for (size_t i = 1; i < levels_; ++i) {
    const DecimalPower& half = powers_[i - 1];
    LimbScratch scratch(MultiplyScratch(half.size, half.size));
    if (scratch.Get() == nullptr) return false;
    MultiplyLimbs(to, half.limbs, half.size, half.limbs, half.size, scratch.Get());
    powers_[i] = Trimmed(to, 2 * half.size, 2 * half.zeros);
    to += 2 * half.size;
  }
  return true;
}

}  // namespace mirolta
