#include "multiply.h"

#include "karatsuba.h"
#include "limb_basics.h"
#include "seam/small_stack.h"
#include "toom3.h"
#include "toom32.h"
#include "transform_product.h"

namespace mirolta {

namespace {

// The least lengths at which each method is faster than the one before: measured for 64-bit limbs
// with mulx and adx and for 32-bit x86 with vectors, by instruction counts for other 32-bit limbs.
constexpr size_t kKaratsubaLimbs = kLimbBits == 64 ? 36 : MIROLTA_KERNELS_FOR(X86_32) ? 100 : 60;
constexpr size_t kKaratsubaSquareLimbs = kLimbBits == 64 ? 48 : 112;
constexpr size_t kToom3Limbs = kLimbBits == 64 ? 130 : 220;
constexpr size_t kToom32Limbs = kLimbBits == 64 ? 40 : MIROLTA_KERNELS_FOR(X86_32) ? 120 : 80;
// Its frame would be the largest for each halving of a number.
constexpr bool kHasToom32 = !kSmallStack;
// The schoolbook method is fastest below, whatever the longer operand's length.
constexpr size_t kSchoolbookLimbs = kKaratsubaLimbs;

bool HasTransforms(size_t m, size_t n) {
  const size_t least = CurrentTransformKernels().least;
  return m >= least && n >= least;
}
bool IsTransformProduct(size_t m, size_t n) {
  return HasTransforms(m, n) && FitsTransforms(m, n);
}

// An unbalanced product keeps a partial product of 2n limbs and recurses with n and m mod n. Those
// lengths run through Euclid's remainders, which halve every second level: all levels together keep
// less than 8n limbs. Toom-3/2 keeps 4.8n + 7 limbs or less and recurses with at most n / 2.
CheckedSize RecursiveScratch(size_t n) {
  return 8 * CheckedSize(n) + BalancedScratch(n);
}

}  // namespace

// Products by transforms leave the recursive methods the short ones; those too long for transforms
// take the scratch of both.
CheckedSize MultiplyScratch(size_t m, size_t n) noexcept {
  const size_t less = m < n ? m : n;
  if (less < kSchoolbookLimbs) return SizeConstant(0);
  if (m == n && less < kToom3Limbs) return BalancedScratch(n);
  if constexpr (kHasTransforms) {
    if (HasTransforms(m, n)) {
      const CheckedSize transforms = TransformScratch(m, n);
      if (!FitsTransforms(m, n)) return RecursiveScratch(less) + transforms;
      const CheckedSize shorter = RecursiveScratch(CurrentTransformKernels().least);
      return transforms.Value() > shorter.Value() ? transforms : shorter;
    }
  }
  return RecursiveScratch(less);
}

void MultiplyBalanced(Limb* z, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept {
  if (x == y && n < kKaratsubaSquareLimbs) {
    CurrentLimbKernels().square(z, x, n);
  } else if (n < kKaratsubaLimbs) {
    CurrentLimbKernels().multiply(z, x, n, y, n);
  } else if (n < kToom3Limbs) {
    Karatsuba(z, x, y, n, scratch);
  } else if (kHasTransforms && IsTransformProduct(n, n)) {
    TransformProduct(CurrentTransformKernels(), z, x, n, y, n, scratch);
  } else {
    Toom3(z, x, y, n, scratch);
  }
}

void MultiplyLimbs(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n,
                   Limb* scratch) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  if (m < n) {
    const Limb* const other = x;
    x = y;
    y = other;
    const size_t count = m;
    m = n;
    n = count;
  }
  // MultiplyBalanced squares, which costs at most as much as a schoolbook product.
  if (n < kSchoolbookLimbs && (m != n || x != y)) {
    k.multiply(z, x, m, y, n);
    return;
  }
  if (m == n) {
    MultiplyBalanced(z, x, y, n, scratch);
    return;
  }
  if (kHasTransforms && n >= kToom3Limbs && IsTransformProduct(m, n)) {
    TransformProduct(CurrentTransformKernels(), z, x, m, y, n, scratch);
    return;
  }
  if (kHasToom32 && n >= kToom32Limbs && 4 * m >= 5 * n && 5 * m <= 9 * n) {
    Toom32(z, x, m, y, n, scratch);
    return;
  }
  MultiplyBalanced(z, x, y, n, scratch);
  Limb* const part = scratch;
  Limb* const rest = scratch + 2 * n;
  for (size_t done = n; done < m;) {
    const size_t count = m - done < n ? m - done : n;
    MultiplyLimbs(part, y, n, x + done, count, rest);
    CopyLimbs(z + done + n, part + n, count);
    const Limb carry = k.add(z + done, z + done, part, n);
    AddLimb(z + done + n, count, carry);
    done += count;
  }
}

}  // namespace mirolta
