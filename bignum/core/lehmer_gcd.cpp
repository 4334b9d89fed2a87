#include "lehmer_gcd.h"

#include <utility>

#include "divide.h"
#include "limb_basics.h"
#include "matrix_product.h"
#include "multiply.h"
#include "small_quotient.h"

namespace mirolta {

LehmerGcd::~LehmerGcd() {
  if (memory_ == nullptr) return;
  WipeMemory(memory_, memory_limbs_ * sizeof(Limb));
  delete[] memory_;
}

bool LehmerGcd::Reserve(size_t m, size_t n, bool with_cofactor,
                        const HalfGcdLengths& lengths) noexcept {
  with_cofactor_ = with_cofactor;
  least_ = with_cofactor ? lengths.cofactor : lengths.gcd;
  recursion_ = lengths.recursion;
  xn_ = m;
  yn_ = n;
  size_ = (m > n ? m : n) + 1;
  // A cofactor is at most the larger operand; an intermediate product has two limbs more.
  const size_t wide = with_cofactor ? size_ + 3 : 0;
  const size_t half = size_ / 2 + 2;
  // The spare pair; or of a division a divisor and its quotient, which together have at most size_ limbs, and
  // the scratch of that division. A quotient and the cofactor that it multiplies have no more limbs together
  // than the larger operand and two.
  CheckedSize scratch = 3 * CheckedSize(size_) + MultiplyScratch(half, half);
  if (kHasHalfGcd && size_ > least_) {
    const size_t upper = size_ / UpperPart() + 1;
    const size_t entry = HalfGcdEntry(upper);
    CheckedSize steps = HalfGcdScratch(upper, size_ - upper + 2, recursion_, UpperSums());
    // The new cofactors have no more limbs than size_.
    if (with_cofactor)
      steps = LargerOf(steps, PairScratch(entry, size_ - entry + 3, PairSums::kInTurn));
    scratch = LargerOf(scratch, 4 * CheckedSize(entry) + steps);
  }
  const CheckedSize limbs = 2 * CheckedSize(size_) + 4 * CheckedSize(wide) + scratch;
  memory_ = NewArray<Limb>(limbs);
  if (memory_ == nullptr) return false;
  memory_limbs_ = limbs.Value();
  ZeroLimbs(memory_, memory_limbs_);
  x_ = memory_;
  y_ = x_ + size_;
  t0_ = y_ + size_;
  t1_ = t0_ + wide;
  spare_t0_ = t1_ + wide;
  spare_t1_ = spare_t0_ + wide;
  work_ = spare_t1_ + wide;
  spare_x_ = work_;
  spare_y_ = spare_x_ + size_;
  return true;
}

void LehmerGcd::Run() noexcept {
  xn_ = SignificantLimbs(x_, xn_);
  yn_ = SignificantLimbs(y_, yn_);
  if (with_cofactor_) {
    t1_[0] = 1;
    tn_ = 1;
  }
  while (yn_ != 0) {
    EuclidSteps steps;
    if (kHasHalfGcd && xn_ >= least_ && TakeUpperSteps()) continue;
    if (xn_ == 1 && yn_ == 1) {
      FinishInOneLimb();
    } else if (xn_ >= yn_ && xn_ <= yn_ + 1 &&
               (xn_ == 2 ? FindStepsOfTwoLimbs(&steps) : FindEuclidSteps(&steps, x_, y_, xn_))) {
      Apply(steps);
    } else {
      DivisionStep();
    }
  }
  tn_ = SignificantLimbs(t0_, tn_);
}

// Exact steps while the remainder has two limbs: the cofactors fit one limb.
bool LehmerGcd::FindStepsOfTwoLimbs(EuclidSteps* steps) const {
  DoubleLimb x = static_cast<DoubleLimb>(x_[1]) << kLimbBits | x_[0];
  DoubleLimb y = static_cast<DoubleLimb>(y_[1]) << kLimbBits | y_[0];
  if (y > x || y_[1] == 0) return false;
  for (;;) {
    Limb quotient = 1;
    DoubleLimb z = x - y;
    if (z >= y) {
      // Below B, as y has two limbs.
      quotient = static_cast<Limb>(1 + SmallQuotient(&z, y));
    }
    if (z >> kLimbBits == 0) return steps->Changed();
    steps->Step(quotient);
    x = y;
    y = z;
  }
}

void LehmerGcd::Apply(const EuclidSteps& steps) {
  ReduceByEuclidSteps(steps, spare_x_, spare_y_, x_, y_, xn_);
  std::swap(x_, spare_x_);
  std::swap(y_, spare_y_);
  xn_ = SignificantLimbs(x_, xn_);
  yn_ = SignificantLimbs(y_, xn_);
  if (steps.odd) odd_ = !odd_;
  if (!with_cofactor_) return;
  // The new cofactors have at most one limb more.
  MultiplyByEuclidSteps(steps, spare_t0_, spare_t1_, t0_, t1_, tn_);
  std::swap(t0_, spare_t0_);
  std::swap(t1_, spare_t1_);
  if (t0_[tn_] != 0 || t1_[tn_] != 0) ++tn_;
}

// Moves the pair out of the scratch.
void LehmerGcd::LeaveWork() {
  if (x_ != work_ && y_ != work_) return;
  std::swap(x_, spare_x_);
  std::swap(y_, spare_y_);
  const size_t n = xn_ > yn_ ? xn_ : yn_;
  CopyLimbs(x_, spare_x_, n);
  CopyLimbs(y_, spare_y_, n);
}

// Finds steps from the upper limbs alone. Returns false if there are none.
bool LehmerGcd::TakeUpperSteps() {
  if (!kHasHalfGcd) return false;  // and no call of it is compiled
  const size_t n = xn_ / UpperPart();
  const size_t low = xn_ - n;
  if (yn_ > xn_ || yn_ <= low + n / 2 + 1 || CompareLimbs(x_ + low, y_ + low, n) < 0) return false;
  LeaveWork();
  const size_t entry = HalfGcdEntry(n);
  EuclidMatrix matrix;
  PlaceEntries(&matrix, work_, entry);
  Limb* const rest = work_ + 4 * entry;
  const size_t high = HalfGcd(x_ + low, y_ + low, n, &matrix, rest, recursion_);
  if (!matrix.Changed()) return false;
  xn_ = JoinLowLimbs(matrix, x_, y_, low, high, rest, UpperSums());
  yn_ = SignificantLimbs(y_, xn_);
  odd_ = odd_ != matrix.odd;
  if (!with_cofactor_) return true;
  MultiplyPair(matrix, spare_t0_, spare_t1_, t0_, t1_, tn_, rest, PairSums::kInTurn);
  std::swap(t0_, spare_t0_);
  std::swap(t1_, spare_t1_);
  const size_t n0 = SignificantLimbs(t0_, matrix.n + tn_ + 1);
  const size_t n1 = SignificantLimbs(t1_, matrix.n + tn_ + 1);
  tn_ = n0 > n1 ? n0 : n1;
  return true;
}

void LehmerGcd::DivisionStep() {
  const LimbKernels& k = CurrentLimbKernels();
  LeaveWork();
  Limb* const divisor = work_;
  Limb* const quotient = divisor + yn_;
  size_t count = 0;
  if (xn_ >= yn_) {
    count = xn_ - yn_ + 1;
    CopyLimbs(divisor, y_, yn_);
    DivideInPlace(quotient, x_, xn_, divisor, yn_, quotient + count);
    ZeroLimbs(x_ + yn_, xn_ - yn_ + 1);
    count = SignificantLimbs(quotient, count);
  }
  std::swap(x_, y_);
  const size_t old = xn_;
  xn_ = yn_;
  yn_ = SignificantLimbs(y_, count != 0 ? yn_ : old);
  // y is zero above yn_ up to xn_: the division left zeros above its remainder.
  odd_ = !odd_;
  if (!with_cofactor_) return;
  const size_t n1 = SignificantLimbs(t1_, tn_);
  if (count != 0 && n1 != 0) {
    MultiplyLimbs(spare_t1_, t1_, n1, quotient, count, quotient + count);
    size_t n = n1 + count;
    if (n < tn_) {
      ZeroLimbs(spare_t1_ + n, tn_ - n);
      n = tn_;
    }
    const Limb carry = k.add(spare_t1_, spare_t1_, t0_, tn_);
    spare_t1_[n] = AddLimb(spare_t1_ + tn_, n - tn_, carry);
    n = SignificantLimbs(spare_t1_, n + 1);
    if (n < n1) n = n1;
    ZeroLimbs(t1_ + tn_, n > tn_ ? n - tn_ : 0);
    if (n < tn_) n = tn_;
    std::swap(t0_, t1_);
    std::swap(t1_, spare_t1_);
    tn_ = n;
  } else {
    std::swap(t0_, t1_);
  }
}

// The cofactors fit one limb: the last ones are x and y divided by their greatest common divisor.
void LehmerGcd::FinishInOneLimb() {
  Limb x = x_[0];
  Limb y = y_[0];
  EuclidSteps steps;
  while (y != 0) {
    const Limb quotient = static_cast<Limb>(x / y);
    const Limb z = static_cast<Limb>(x - quotient * y);
    steps.Step(quotient);
    x = y;
    y = z;
  }
  x_[0] = x;
  y_[0] = 0;
  yn_ = 0;
  if (steps.odd) odd_ = !odd_;
  if (!with_cofactor_) return;
  const LimbKernels& k = CurrentLimbKernels();
  const Limb c = k.mul1(spare_t0_, t0_, tn_, steps.u0);
  const Limb d = k.mul_add1(spare_t0_, t1_, tn_, steps.v0);
  spare_t0_[tn_] = static_cast<Limb>(c + d);
  std::swap(t0_, spare_t0_);
  ++tn_;
}

}  // namespace mirolta
