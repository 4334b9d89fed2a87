#include "lehmer_gcd.h"

#include "divide.h"
#include "limb_basics.h"
#include "multiply.h"
#include "small_quotient.h"

namespace mirolta {

// Matrix: several steps at once, r(i) = +-(u0 x - v0 y), r(i+1) = -+(u1 x - v1 y), the upper signs
// for an even number of steps. The cofactors' magnitudes take the same factors, all positive.
struct LehmerGcd::Matrix {
  Limb u0 = 1, v0 = 0;
  Limb u1 = 0, v1 = 1;
  bool odd = false;

  void Step(Limb quotient) {
    const Limb u = static_cast<Limb>(u0 + quotient * u1);
    const Limb v = static_cast<Limb>(v0 + quotient * v1);
    u0 = u1;
    v0 = v1;
    u1 = u;
    v1 = v;
    odd = !odd;
  }
  bool Changed() const { return u1 != 0; }
};

namespace {

template <typename T>
void Swap(T& a, T& b) {
  const T c = a;
  a = b;
  b = c;
}

constexpr uint64_t kFloor = uint64_t{1} << 34;

// Euclid's steps on approximations x and y, which differ from the true values by at most 2. A step
// is taken only while the new remainder z and y - z are at least kFloor. Then every cofactor is at
// most x / y <= 2^64 / 2^34 = 2^30, and the true remainders differ from the approximate ones by at
// most 2 * 2 * 2^30 < kFloor / 2. So 0 < z < y holds for the true values too, and the quotient is
// the same.
template <typename Matrix>
void Simulate(uint64_t x, uint64_t y, Matrix* matrix) {
  if (y < kFloor) return;
  for (;;) {
    uint64_t quotient = 1;
    uint64_t z = x - y;
    // Most quotients are small, and a subtraction costs less than a division.
    if (z >= y) {
      z -= y;
      quotient = 2;
      if (z >= y) {
        quotient += SmallQuotient(&z, y);
      }
    }
    if (z < kFloor || y - z < kFloor) return;
    matrix->Step(static_cast<Limb>(quotient));
    x = y;
    y = z;
  }
}

}  // namespace

LehmerGcd::~LehmerGcd() {
  if (memory_ == nullptr) return;
  WipeMemory(memory_, memory_limbs_ * sizeof(Limb));
  delete[] memory_;
}

bool LehmerGcd::Run(const Limb* x, size_t m, const Limb* y, size_t n, bool with_cofactor) noexcept {
  m = SignificantLimbs(x, m);
  n = SignificantLimbs(y, n);
  const size_t size = (m > n ? m : n) + 1;
  // A cofactor is at most the larger operand; an intermediate product has two limbs more.
  const size_t wide = with_cofactor ? size + 3 : 0;
  CheckedSize limbs = 5 * CheckedSize(size) + 4 * CheckedSize(wide);
  if (with_cofactor) limbs = limbs + MultiplyScratch(size, size);
  memory_ = NewArray<Limb>(limbs);
  if (memory_ == nullptr) return false;
  memory_limbs_ = limbs.Value();
  ZeroLimbs(memory_, memory_limbs_);
  x_ = memory_;
  y_ = x_ + size;
  spare_x_ = y_ + size;
  spare_y_ = spare_x_ + size;
  quotient_ = spare_y_ + size;
  t0_ = quotient_ + size;
  t1_ = t0_ + wide;
  spare_t0_ = t1_ + wide;
  spare_t1_ = spare_t0_ + wide;
  product_scratch_ = spare_t1_ + wide;
  CopyLimbs(x_, x, m);
  CopyLimbs(y_, y, n);
  xn_ = m;
  yn_ = n;
  with_cofactor_ = with_cofactor;
  if (with_cofactor) {
    t1_[0] = 1;
    tn_ = 1;
  }

  while (yn_ != 0) {
    Matrix matrix;
    if (xn_ == 1 && yn_ == 1) {
      FinishInOneLimb();
    } else if (xn_ >= yn_ && xn_ <= yn_ + 1 &&
               (xn_ == 2 ? FindMatrixOfTwoLimbs(&matrix) : FindMatrix(&matrix))) {
      Apply(matrix);
    } else if (!DivisionStep()) {
      return false;
    }
  }
  tn_ = SignificantLimbs(t0_, tn_);
  return true;
}

bool LehmerGcd::FindMatrix(Matrix* matrix) const {
  const size_t n = xn_;
  if (y_[n - 1] > x_[n - 1]) return false;  // normalising x would shift bits out of y
  const uint32_t shift = LeadingZeros(x_[n - 1]);
  const auto top = [n, shift](const Limb* z) {
    DoubleLimb t = static_cast<DoubleLimb>(z[n - 1]) << kLimbBits | z[n - 2];
    if (shift != 0) t = t << shift | z[n - 3] >> (kLimbBits - shift);
    return t;
  };
  const DoubleLimb x = top(x_);
  const DoubleLimb y = top(y_);
  if (y > x) return false;
  if constexpr (kLimbBits == 32) {
    Simulate(static_cast<uint64_t>(x), static_cast<uint64_t>(y), matrix);
    return matrix->Changed();
  } else {
    Matrix first;
    Simulate(static_cast<uint64_t>(x >> 32 >> 32), static_cast<uint64_t>(y >> 32 >> 32), &first);
    if (!first.Changed()) return false;
    // The double limbs after these steps have an error below 2^31. Truncating them to 64 bits drops
    // at least 33 bits, which makes that an error below 1 and adds less than 1.
    DoubleLimb a = x * first.u0 - y * first.v0;
    DoubleLimb b = y * first.v1 - x * first.u1;
    if (first.odd) {
      a = 0 - a;
      b = 0 - b;
    }
    const uint32_t bits = 128 - LeadingZeros(static_cast<Limb>(a >> 32 >> 32));
    const uint32_t cut = bits - 64;
    Matrix second;
    Simulate(static_cast<uint64_t>(a >> cut), static_cast<uint64_t>(b >> cut), &second);
    matrix->u0 = second.u0 * first.u0 + second.v0 * first.u1;
    matrix->v0 = second.u0 * first.v0 + second.v0 * first.v1;
    matrix->u1 = second.u1 * first.u0 + second.v1 * first.u1;
    matrix->v1 = second.u1 * first.v0 + second.v1 * first.v1;
    matrix->odd = first.odd != second.odd;
    return true;
  }
}

// Exact steps while the remainder has two limbs: the cofactors fit one limb.
bool LehmerGcd::FindMatrixOfTwoLimbs(Matrix* matrix) const {
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
    if (z >> kLimbBits == 0) return matrix->Changed();
    matrix->Step(quotient);
    x = y;
    y = z;
  }
}

void LehmerGcd::Apply(const Matrix& matrix) {
  const LimbKernels& k = CurrentLimbKernels();
  const Limb* plus_x = x_;
  const Limb* minus_x = y_;
  Limb u0 = matrix.u0, v0 = matrix.v0, u1 = matrix.u1, v1 = matrix.v1;
  if (matrix.odd) {
    // r(i) = v0 y - u0 x and r(i+1) = u1 x - v1 y
    Swap(plus_x, minus_x);
    Swap(u0, v0);
    Swap(u1, v1);
  }
  // The carries of both products are equal, so they cancel.
  k.mul1(spare_x_, plus_x, xn_, u0);
  k.mul_sub1(spare_x_, minus_x, xn_, v0);
  k.mul1(spare_y_, minus_x, xn_, v1);
  k.mul_sub1(spare_y_, plus_x, xn_, u1);
  Swap(x_, spare_x_);
  Swap(y_, spare_y_);
  xn_ = SignificantLimbs(x_, xn_);
  yn_ = SignificantLimbs(y_, xn_);
  if (matrix.odd) odd_ = !odd_;
  if (!with_cofactor_) return;
  const Limb c0 = k.mul1(spare_t0_, t0_, tn_, matrix.u0);
  const Limb d0 = k.mul_add1(spare_t0_, t1_, tn_, matrix.v0);
  const Limb c1 = k.mul1(spare_t1_, t0_, tn_, matrix.u1);
  const Limb d1 = k.mul_add1(spare_t1_, t1_, tn_, matrix.v1);
  // The new cofactors have at most one limb more, so that c + d does not overflow.
  spare_t0_[tn_] = static_cast<Limb>(c0 + d0);
  spare_t1_[tn_] = static_cast<Limb>(c1 + d1);
  Swap(t0_, spare_t0_);
  Swap(t1_, spare_t1_);
  if (t0_[tn_] != 0 || t1_[tn_] != 0) ++tn_;
}

bool LehmerGcd::DivisionStep() {
  const LimbKernels& k = CurrentLimbKernels();
  size_t count = 0;
  if (xn_ >= yn_) {
    count = xn_ - yn_ + 1;
    if (!DivideLimbs(quotient_, x_, x_, xn_, y_, yn_)) return false;
    ZeroLimbs(x_ + yn_, xn_ - yn_);
    count = SignificantLimbs(quotient_, count);
  }
  Swap(x_, y_);
  const size_t old = xn_;
  xn_ = yn_;
  yn_ = SignificantLimbs(y_, count != 0 ? yn_ : old);
  // y is zero above yn_ up to xn_: the division left zeros above its remainder.
  odd_ = !odd_;
  if (!with_cofactor_) return true;
  const size_t n1 = SignificantLimbs(t1_, tn_);
  if (count != 0 && n1 != 0) {
    MultiplyLimbs(spare_t1_, t1_, n1, quotient_, count, product_scratch_);
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
    Swap(t0_, t1_);
    Swap(t1_, spare_t1_);
    tn_ = n;
  } else {
    Swap(t0_, t1_);
  }
  return true;
}

// The cofactors fit one limb: the last ones are x and y divided by their greatest common divisor.
void LehmerGcd::FinishInOneLimb() {
  Limb x = x_[0];
  Limb y = y_[0];
  Matrix matrix;
  while (y != 0) {
    const Limb quotient = static_cast<Limb>(x / y);
    const Limb z = static_cast<Limb>(x - quotient * y);
    matrix.Step(quotient);
    x = y;
    y = z;
  }
  x_[0] = x;
  y_[0] = 0;
  yn_ = 0;
  if (matrix.odd) odd_ = !odd_;
  if (!with_cofactor_) return;
  const LimbKernels& k = CurrentLimbKernels();
  const Limb c = k.mul1(spare_t0_, t0_, tn_, matrix.u0);
  const Limb d = k.mul_add1(spare_t0_, t1_, tn_, matrix.v0);
  spare_t0_[tn_] = static_cast<Limb>(c + d);
  Swap(t0_, spare_t0_);
  ++tn_;
}

}  // namespace mirolta
