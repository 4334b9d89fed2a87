#include "newton_division.h"

#include "burnikel_ziegler.h"
#include "limb_basics.h"
#include "reciprocal.h"

namespace mirolta {

namespace {

// Reciprocals of fewer limbs are quotients of the recursive division.
constexpr size_t kLeastNewton = 200;

// The least length of operands, over that of products by transforms; measured.
constexpr size_t kLeastTransforms = 3;

// A quotient in two blocks costs least; one much longer than the divisor has blocks of the divisor's length or less.
// One limb more is counted for NewtonQuotient.
size_t BlockLength(size_t n, size_t count) {
  const size_t blocks = count / 2 < n ? 2 : count / n + 1;
  return count / blocks + 1;
}

// The length of the top block, where all others have `length`.
size_t TopBlock(size_t count, size_t length) {
  while (count > length) count -= length;
  return count;
}

// floor((B^2n - 1) / d).
// Shapes: as for NewtonReciprocal, n >= 2.
void ReciprocalByDivision(Limb* z, const Limb* d, size_t n, Limb* scratch) {
  // The top limb is 1, and what it leaves B^2n - 1 - B^n d.
  Limb* const a = scratch;
  for (size_t i = 0; i < n; ++i) a[i] = kLimbMax;
  ComplementLimbs(a + n, d, n);
  const Limb v = Reciprocal3By2(d[n - 1], d[n - 2]);
  z[n] = static_cast<Limb>(1 + BurnikelZieglerDivide(z, a, d, n, n, v, scratch + 2 * n));
}

// The reciprocal of a divisor's top limbs, or of those and 1 if there are more: never too large.
void ReciprocalOfTop(Limb* z, const Limb* d, size_t n, size_t length, Limb* scratch) {
  const Limb* top = d + n - length;
  if (length != n) {
    Limb* const above = scratch;
    CopyLimbs(above, top, length);
    if (AddLimb(above, length, 1) != 0) {
      ZeroLimbs(z, length);
      z[length] = 1;
      return;
    }
    top = above;
    scratch += length;
  }
  NewtonReciprocal(z, top, length, scratch);
}

// NewtonBlocks: the reciprocal of a divisor, and the quotients of its blocks.
class NewtonBlocks {
 public:
  NewtonBlocks(const Limb* d, size_t n, size_t length, Limb* scratch)
      : d_(d), n_(n), length_(length), reciprocal_(scratch), product_(scratch + length + 1) {
    ReciprocalOfTop(reciprocal_, d, n, length, product_);
  }

  // The quotient of a / d, or less by at most 12, is in the returned limbs; the top n limbs of a[n + count] are
  // below d, of which the top count limbs are at `top`.
  // Shapes: top[count], count <= length.
  const Limb* Approximate(const Limb* top, size_t count) const {
    const Limb* const reciprocal = reciprocal_ + (length_ - count);
    MultiplyLimbs(product_, reciprocal, count + 1, top, count, product_ + 2 * count + 1);
    return product_ + count;
  }

  // q := a / d; the lowest n limbs of a := a mod d.
  // Shapes: a[n + count], its top n limbs below d; q[count], count <= length.
  void Divide(Limb* q, Limb* a, size_t count) const {
    const LimbKernels& k = CurrentLimbKernels();
    CopyLimbs(q, Approximate(a + n_, count), count);
    // Below 13 d.
    SubtractProduct(CurrentTransformKernels(), a, n_ + 1, a, n_ + count, d_, n_, q, count,
                    product_);
    while (a[n_] != 0 || CompareLimbs(a, d_, n_) >= 0) {
      a[n_] = static_cast<Limb>(a[n_] - k.subtract(a, a, d_, n_));
      AddLimb(q, count, 1);
    }
  }

  // q := a / d or less, as Approximate says, with a limb of the fraction, which is returned. a has one limb less.
  // Shapes: a[n + length - 1], its top n limbs below d; q[length - 1].
  Limb DivideWithFraction(Limb* q, const Limb* a) const {
    const Limb* const quotient = Approximate(a + n_ - 1, length_);
    CopyLimbs(q, quotient + 1, length_ - 1);
    return quotient[0];
  }

 private:
  const Limb* d_;
  size_t n_;
  size_t length_;
  Limb* reciprocal_;
  Limb* product_;
};

}  // namespace

bool IsNewtonFaster(size_t n, size_t count) noexcept {
  const size_t least = kLeastTransforms * CurrentTransformKernels().least;
  return n >= least && count >= least;
}

CheckedSize NewtonReciprocalScratch(size_t n) noexcept {
  // The shortest reciprocals, and the products of the last step.
  const size_t base = n < kLeastNewton ? n : kLeastNewton;
  const CheckedSize shortest = 2 * CheckedSize(base) + BurnikelZieglerScratch(base, base);
  const size_t h = n / 2 + 1;
  const CheckedSize first =
      2 * CheckedSize(n) + 1 + MiddleProductScratch(CurrentTransformKernels(), n + 1, n, h + 1);
  const CheckedSize second = 2 * CheckedSize(n) + 4 + MultiplyScratch(h + 1, n - h + 2);
  const CheckedSize last = LargerOf(first, second);
  return LargerOf(shortest, last);
}

CheckedSize NewtonScratch(size_t n, size_t count) noexcept {
  const size_t length = BlockLength(n, count), shorter = BlockLength(n, count - 1);
  const size_t most = length > shorter ? length : shorter;
  const CheckedSize products =
      LargerOf(2 * CheckedSize(most) + 1 + MultiplyScratch(most + 1, most),
               MiddleProductScratch(CurrentTransformKernels(), n + 1, n, most));
  return CheckedSize(most) + 1 +
         LargerOf(CheckedSize(most) + NewtonReciprocalScratch(most), products);
}

void NewtonReciprocal(Limb* z, const Limb* d, size_t n, Limb* scratch) noexcept {
  if (n < kLeastNewton) {
    ReciprocalByDivision(z, d, n, scratch);
    return;
  }
  // With R the reciprocal of the top h limbs, less 4: E = B^(n + h) - R d is positive and below 7 B^n, as the
  // limbs of d below change R d by less than 2 B^n. Newton's step adds R E / B^2h; what it leaves is a
  // fraction since n < 2 h.
  const size_t h = n / 2 + 1;
  const size_t low = n - h;
  Limb* const r = z + low;
  NewtonReciprocal(r, d + low, h, scratch);
  SubtractLimb(r, h + 1, 4);
  Limb* const power = scratch;
  ZeroLimbs(power, n + h);
  power[n + h] = 1;
  SubtractProduct(CurrentTransformKernels(), power, n + 1, power, n + h + 1, d, n, r, h + 1,
                  power + n + h + 1);
  // E without its lowest h - 1 limbs, which change the step by less than 1.
  const Limb* const e = power + h - 1;
  Limb* const step = power + n + 1;
  MultiplyLimbs(step, r, h + 1, e, low + 2, step + n + 3);
  ZeroLimbs(z, low);
  const Limb carry = CurrentLimbKernels().add(z, z, step + h + 1, low + 1);
  AddLimb(z + low + 1, h, carry);
}

void NewtonDivide(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb* scratch) noexcept {
  const size_t length = BlockLength(n, count);
  const NewtonBlocks blocks(d, n, length, scratch);
  for (size_t block = TopBlock(count, length); count != 0; block = length) {
    count -= block;
    blocks.Divide(q + count, a + count, block);
  }
}

bool NewtonQuotient(Limb* q, Limb* a, const Limb* d, size_t n, size_t count,
                    Limb* scratch) noexcept {
  if (n > count + 2) {
    // The limbs of d below its top count + 2 contribute less than B^(n - 2).
    const size_t omitted = n - count - 2;
    a += omitted;
    d += omitted;
    n -= omitted;
    if (CompareLimbs(a + count, d, n) >= 0) return false;
  }
  const size_t length = BlockLength(n, count);
  const NewtonBlocks blocks(d, n, length, scratch);
  // The last block has a limb of the fraction, and one less of the quotient.
  size_t all = count + 1;
  for (size_t block = TopBlock(all, length); all != length; block = length) {
    all -= block;
    blocks.Divide(q + all - 1, a + all - 1, block);
  }
  const Limb fraction = blocks.DivideWithFraction(q, a);
  // The true quotient is larger by at most 12 of the fraction's lowest bits, and the omitted limbs of d and a
  // change it by less than one.
  return fraction != 0 && fraction < kLimbMax - 16;
}

}  // namespace mirolta
