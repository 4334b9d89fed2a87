#include "matrix_product.h"

#include "limb_basics.h"
#include "multiply.h"
#include "transform_product.h"

namespace mirolta {

namespace {

// z := x * y, also of numbers that are zero.
// Shapes: x[m], y[n], z[m + n].
void MultiplyAny(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n, Limb* scratch) {
  const size_t xn = SignificantLimbs(x, m);
  const size_t yn = SignificantLimbs(y, n);
  const size_t count = xn != 0 && yn != 0 ? xn + yn : 0;
  if (count != 0) MultiplyLimbs(z, x, xn, y, yn, scratch);
  ZeroLimbs(z + count, m + n - count);
}

// Transforms that products share are faster from half of the length on from which those of one are; measured.
[[maybe_unused]] bool HasSharedTransforms(size_t m, size_t n) {
  if constexpr (!kHasTransforms) return false;
  const size_t least = CurrentTransformKernels().least / 2;
  return m >= least && n >= least;
}

// z := u x + v y.
void MultiplyRow(Limb* z, const Limb* u, const Limb* v, size_t m, const Limb* x, const Limb* y,
                 size_t n, Limb* scratch) {
  Limb* const product = scratch;
  MultiplyAny(z, u, m, x, n, scratch + m + n);
  MultiplyAny(product, v, m, y, n, scratch + m + n);
  z[m + n] = CurrentLimbKernels().add(z, z, product, m + n);
}

}  // namespace

void PlaceEntries(EuclidMatrix* matrix, Limb* memory, size_t limbs) noexcept {
  for (size_t c = 0; c < 2; ++c) {
    matrix->first[c] = memory + c * limbs;
    matrix->second[c] = memory + (2 + c) * limbs;
  }
}

CheckedSize PairScratch(size_t m, size_t n, PairSums sums) noexcept {
  const CheckedSize products = CheckedSize(m) + CheckedSize(n) + MultiplyScratch(m, n);
  if constexpr (kHasTransforms) {
    if (HasSharedTransforms(m, n)) {
      return LargerOf(products, TransformSumsScratch(sums == PairSums::kTogether ? 2 : 1, m, n));
    }
  }
  return products;
}

void MultiplyPair(const EuclidMatrix& matrix, Limb* z0, Limb* z1, const Limb* x, const Limb* y,
                  size_t n, Limb* scratch, PairSums sums) noexcept {
  const size_t m = matrix.n;
  if constexpr (kHasTransforms) {
    if (HasSharedTransforms(m, n) && FitsTransformSums(m, n)) {
      const SumOfProducts rows[] = {{z0, matrix.first[0], matrix.first[1]},
                                    {z1, matrix.second[0], matrix.second[1]}};
      const size_t count = sums == PairSums::kTogether ? 2 : 1;
      for (size_t row = 0; row < 2; row += count) {
        TransformSums(CurrentTransformKernels(), rows + row, count, m, x, y, n, scratch);
      }
      return;
    }
  }
  MultiplyRow(z0, matrix.first[0], matrix.first[1], m, x, y, n, scratch);
  MultiplyRow(z1, matrix.second[0], matrix.second[1], m, x, y, n, scratch);
}

}  // namespace mirolta
