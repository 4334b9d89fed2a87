#include "secret_residues.h"

#include "limb_basics.h"

namespace mirolta {

namespace {

constexpr size_t kMostDoublings = 2 * size_t{kLimbBits};

// z := z + x mod m. One subtraction of m brings z + x < 2 m below m, unless it borrows more than the
// sum's carry.
// Shapes: m[n], z[n] and x[n] < m, spare[n].
void SumModulo(Limb* z, const Limb* x, const Limb* m, size_t n, Limb* spare) {
  const LimbKernels& k = CurrentLimbKernels();
  const Limb carry = k.add(z, z, x, n);
  const Limb borrow = k.subtract(spare, z, m, n);
  const Limb keep = static_cast<Limb>(0 - static_cast<Limb>(borrow & (carry ^ 1)));
  SelectLimbs(z, z, spare, keep, n);
}

}  // namespace

void DoubleModulo(Limb* z, const Limb* m, size_t n, Limb* spare) noexcept {
  SumModulo(z, z, m, n, spare);
}

void DoubleToPower(Limb* z, size_t e, const Limb* m, size_t n, Limb* spare) noexcept {
  // Its top bit is below m, since m is odd.
  const size_t top = LimbBits(m, n) - 1;
  ZeroLimbs(z, n);
  z[top / kLimbBits] = static_cast<Limb>(Limb{1} << (top % kLimbBits));
  for (size_t i = top; i < e; ++i) DoubleModulo(z, m, n, spare);
}

SecretResidues::SecretResidues(const Limb* m, size_t n, Limb* memory, const Limb* square) noexcept
    : modulus_(PrepareMontgomery(m, n)),
      product_(memory),
      square_(memory + 2 * n),
      spare_(memory + 3 * n) {
  if (square != nullptr) {
    CopyLimbs(square_, square, n);
  } else {
    MakePower(square_, n * kLimbBits);
  }
}

void SecretResidues::WideProduct(Limb* z, const Limb* x, const Limb* y) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  if (x == y) {
    k.square(product_, x, modulus_.n);
  } else {
    k.multiply(product_, x, modulus_.n, y, modulus_.n);
  }
  k.reduce(z, product_, modulus_.m, modulus_.n, modulus_.inverse);
}

void SecretResidues::Multiply(Limb* z, const Limb* x, const Limb* y) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  if (!k.montgomery(z, x, y, modulus_.m, modulus_.n, modulus_.inverse)) WideProduct(z, x, y);
}

void SecretResidues::Leave(Limb* z, const Limb* x) noexcept {
  CopyLimbs(product_, x, modulus_.n);
  ZeroLimbs(product_ + modulus_.n, modulus_.n);
  CurrentLimbKernels().reduce(z, product_, modulus_.m, modulus_.n, modulus_.inverse);
}

void SecretResidues::Sum(Limb* z, const Limb* x) noexcept {
  SumModulo(z, x, modulus_.m, modulus_.n, product_);
}

void SecretResidues::Subtract(Limb* z, const Limb* x, const Limb* y) noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  const Limb borrow = k.subtract(z, x, y, modulus_.n);
  k.add(product_, z, modulus_.m, modulus_.n);
  SelectLimbs(z, product_, z, static_cast<Limb>(0 - borrow), modulus_.n);
}

void SecretResidues::PowerOfTwo(Limb* z, size_t e) noexcept {
  const size_t n = modulus_.n;
  if (e == 0) {
    Leave(z, square_);
    return;
  }
  // Wraps to a large number for less than B^n.
  const size_t doublings = e - n * kLimbBits;
  if (doublings <= kMostDoublings) {
    CopyLimbs(z, square_, n);
    for (size_t i = 0; i < doublings; ++i) Double(z);
    return;
  }
  MakePower(z, e);
}

void SecretResidues::MakePower(Limb* z, size_t e) noexcept {
  const size_t n = modulus_.n;
  // B^n mod m is doubled while that costs less than a product.
  uint32_t shift = 0;
  while ((e >> shift) > n / 2) ++shift;
  DoubleToPower(z, n * kLimbBits + (e >> shift), modulus_.m, n, product_);
  while (shift-- != 0) {
    Multiply(z, z, z);
    if ((e >> shift & 1) != 0) Double(z);
  }
}

void SecretResidues::Enter(Limb* z, const Limb* x, size_t count) noexcept {
  const size_t n = modulus_.n;
  Limb* const chunk = spare_;
  Limb* const residue = spare_ + n;
  ZeroLimbs(z, n);
  // Horner's rule on chunks of n limbs, which may exceed m.
  for (size_t i = (count + n - 1) / n; i-- != 0;) {
    const size_t length = count - i * n < n ? count - i * n : n;
    CopyLimbs(chunk, x + i * n, length);
    ZeroLimbs(chunk + length, n - length);
    Multiply(z, z, square_);
    WideProduct(residue, chunk, square_);
    Sum(z, residue);
  }
}

void SecretResidues::EnterShifted(Limb* one, Limb* z, const Limb* x, size_t count,
                                  size_t e) noexcept {
  PowerOfTwo(one, e);
  Enter(z, x, count);
  Multiply(z, z, one);
  Leave(z, z);
  Leave(one, one);
}

}  // namespace mirolta
