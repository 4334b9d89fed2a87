#include "multiply.h"

#include "limb_basics.h"
#include "toom3.h"

namespace mirolta {

namespace {

// Below, rows are faster whatever the longer operand's length: that of the equal sizes' methods.
constexpr size_t kSchoolbookLimbs = kLimbBits == 64 ? 36 : 60;

// From here on the sums of a product of three parts by two are worth it.
constexpr size_t kToom32Limbs = kLimbBits == 64 ? 40 : 80;

}  // namespace

// A product of unequal operands keeps a partial product of 2n limbs, then goes on with n and a
// remainder; the remainders of Euclid's kind halve every second time, so all levels together keep
// less than 8n. Three parts by two keep 4.8n + 7 limbs or less for two values and go on with at
// most half of n.
CheckedSize MultiplyScratch(size_t m, size_t n) noexcept {
  const size_t less = m < n ? m : n;
  if (less < kSchoolbookLimbs) return SizeConstant(0);
  return 8 * CheckedSize(less) + BalancedScratch(less);
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
  // A square is at least as cheap as a product even where both are done by rows.
  if (n < kSchoolbookLimbs && (m != n || x != y)) {
    k.multiply(z, x, m, y, n);
    return;
  }
  if (m == n) {
    MultiplyBalanced(z, x, y, n, scratch);
    return;
  }
  if (n >= kToom32Limbs && 4 * m >= 5 * n && 5 * m <= 9 * n) {
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
