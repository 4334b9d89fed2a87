#include "limb_kernel_tables.h"
#include "product_scanning.h"

namespace mirolta {

namespace {

bool NoMontgomery(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

template <typename Rows, typename Blocks>
constexpr LimbKernels Table() {
  return {Rows::Add,        Rows::Subtract, Rows::Mul1,     Rows::MulAdd1, Rows::MulSub1,
          Blocks::Multiply, Blocks::Square, Blocks::Reduce, NoMontgomery};
}

}  // namespace

constexpr LimbKernels kWideKernels = Table<RowLoops<WideProducts>, ProductScanningLoops>();
constexpr LimbKernels kHalfKernels =
    Table<RowLoops<HalfProducts>, OperandScanningLoops<RowLoops<HalfProducts>>>();

}  // namespace mirolta
