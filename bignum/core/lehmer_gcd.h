// Lehmer's algorithm: greatest common divisor, cofactor and parity of Euclid's steps.
#pragma once

#include "euclid_steps.h"
#include "half_gcd.h"

namespace mirolta {

// LehmerGcd computes Euclid's sequence r0, r1, r2 = r0 mod r1, ... to the end, where r(i+1) = 0 and
// r(i) is the greatest common divisor, and the magnitudes of the cofactors t0 = 0, t1 = 1,
// t(i+1) = t(i-1) + q(i) * t(i), whose signs alternate. The quotients q(i) are exactly Euclid's;
// several are found from the leading limbs at a time.
// Source: Lehmer 1938; Knuth TAOCP 2, 4.5.2, algorithm L.
class LehmerGcd {
 public:
  LehmerGcd() noexcept = default;
  ~LehmerGcd();
  LehmerGcd(const LehmerGcd&) = delete;
  LehmerGcd& operator=(const LehmerGcd&) = delete;

  // Reserve makes room for operands of m and n limbs, once. Then X[m] and Y[n] are to be written, which
  // are zero. From the least of `lengths` on, HalfGcd finds the steps.
  // Shapes: m >= 0, n >= 0.
  // Errors: false if memory runs out.
  [[nodiscard]] bool Reserve(size_t m, size_t n, bool with_cofactor,
                             const HalfGcdLengths& lengths = kHalfGcdLengths) noexcept;
  Limb* X() { return x_; }
  Limb* Y() { return y_; }

  // Run computes the sequence from r0 = X and r1 = Y, with cofactors if asked for. It may be called once.
  // Time:   depends on the values.
  void Run() noexcept;

  // r(i), without leading zero limbs.
  const Limb* Gcd() const { return x_; }
  size_t GcdLimbs() const { return xn_; }
  // |t(i)|, likewise.
  const Limb* Cofactor() const { return t0_; }
  size_t CofactorLimbs() const { return tn_; }
  // Whether i, the number of Euclid's steps, is odd.
  bool OddSteps() const { return odd_; }

 private:
  void DivisionStep();
  void LeaveWork();
  void Apply(const EuclidSteps& steps);
  void FinishInOneLimb();
  bool FindStepsOfTwoLimbs(EuclidSteps* steps) const;
  bool TakeUpperSteps();
  // The part of the limbs that HalfGcd takes. Shorter ones leave more to the next call, but cost less.
  size_t UpperPart() const { return with_cofactor_ ? 2 : 3; }
  // Beside the cofactors there is less memory.
  PairSums UpperSums() const { return with_cofactor_ ? PairSums::kInTurn : PairSums::kTogether; }

  Limb* memory_ = nullptr;
  size_t memory_limbs_ = 0;
  Limb* x_ = nullptr;  // r(i)
  Limb* y_ = nullptr;  // r(i+1), zero above yn_ up to xn_
  Limb* spare_x_ = nullptr;
  Limb* spare_y_ = nullptr;
  size_t xn_ = 0;
  size_t yn_ = 0;
  Limb* t0_ = nullptr;  // both cofactors have tn_ limbs, the upper ones may be zero
  Limb* t1_ = nullptr;
  Limb* spare_t0_ = nullptr;
  Limb* spare_t1_ = nullptr;
  Limb* work_ =
      nullptr;  // the scratch of HalfGcd and of divisions: one of the pairs, and what follows it
  size_t tn_ = 0;
  size_t size_ = 0;   // of x and y
  size_t least_ = 0;  // for which HalfGcd is faster
  size_t recursion_ = 0;
  bool with_cofactor_ = false;
  bool odd_ = false;
};

}  // namespace mirolta
