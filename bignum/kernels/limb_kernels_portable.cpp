#include "limb_kernel_tables.h"
#include "limb_loops.h"

namespace mirolta {

namespace {

bool NoMontgomery(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

template <typename Multiplier>
constexpr LimbKernels Table() {
  using Rows = RowLoops<Multiplier>;
  using Blocks = BlockLoops<Rows>;
  return {Rows::Add,        Rows::Subtract, Rows::Mul1,     Rows::MulAdd1, Rows::MulSub1,
          Blocks::Multiply, Blocks::Square, Blocks::Reduce, NoMontgomery};
}

}  // namespace

constexpr LimbKernels kWideKernels = Table<WideProducts>();
constexpr LimbKernels kHalfKernels = Table<HalfProducts>();

}  // namespace mirolta
