// Euclid's algorithm on limbs: the greatest common divisor, a cofactor and the number of steps.
#pragma once

#include "limb.h"

namespace mirolta {

// LehmerGcd is Euclid's sequence r0, r1, r2 = r0 mod r1, ... run to its end, where r(i+1) is zero
// and r(i) the greatest common divisor, with the sizes of the cofactors t0 = 0, t1 = 1,
// t(i+1) = t(i-1) + quotient * t(i) beside it (the signed ones alternate in sign). The quotients
// are exactly those of plain division, only found several at a time. Source: Lehmer 1938; Knuth
// TAOCP 2, 4.5.2, algorithm L.
class LehmerGcd {
 public:
  LehmerGcd() noexcept = default;
  ~LehmerGcd();
  LehmerGcd(const LehmerGcd&) = delete;
  LehmerGcd& operator=(const LehmerGcd&) = delete;

  // Runs from r0 = x[m], r1 = y[n]; counts may be 0 for zero values. The cofactor is followed only
  // if asked for. False if memory runs out. To be called once.
  [[nodiscard]] bool Run(const Limb* x, size_t m, const Limb* y, size_t n,
                         bool with_cofactor) noexcept;

  // r(i), without zero limbs at the top.
  const Limb* Gcd() const { return x_; }
  size_t GcdLimbs() const { return xn_; }
  // |t(i)|, likewise.
  const Limb* Cofactor() const { return t0_; }
  size_t CofactorLimbs() const { return tn_; }
  // Whether i, the number of divisions done, is odd.
  bool OddSteps() const { return odd_; }

 private:
  struct Matrix;

  [[nodiscard]] bool DivisionStep();
  void Apply(const Matrix& matrix);
  void FinishInOneLimb();
  bool FindMatrix(Matrix* matrix) const;
  bool FindMatrixOfTwoLimbs(Matrix* matrix) const;

  Limb* memory_ = nullptr;
  size_t memory_limbs_ = 0;
  Limb* x_ = nullptr;  // r(i)
  Limb* y_ = nullptr;  // r(i+1), zero limbs up to xn_
  Limb* spare_x_ = nullptr;
  Limb* spare_y_ = nullptr;
  size_t xn_ = 0;
  size_t yn_ = 0;
  Limb* t0_ = nullptr;  // both cofactors have tn_ limbs, the upper ones possibly zero
  Limb* t1_ = nullptr;
  Limb* spare_t0_ = nullptr;
  Limb* spare_t1_ = nullptr;
  Limb* quotient_ = nullptr;
  Limb* product_scratch_ = nullptr;
  size_t tn_ = 0;
  bool with_cofactor_ = false;
  bool odd_ = false;
};

}  // namespace mirolta
