// Loops over limbs by operand scanning: products row by row. A table with faster rows implements
// those and takes the rest from here.
#pragma once

#include "limb_kernels.h"

namespace mirolta {

// SumLoops: addition and subtraction.
struct SumLoops {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb carry = 0;  // 0 or 1
    for (size_t i = 0; i < n; ++i) {
      const DoubleLimb t = static_cast<DoubleLimb>(x[i]) + y[i] + carry;
      z[i] = static_cast<Limb>(t);
      carry = static_cast<Limb>(t >> kLimbBits);
    }
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb borrow = 0;  // 0 or 1: the top bit of the wrapped difference
    for (size_t i = 0; i < n; ++i) {
      const DoubleLimb t = static_cast<DoubleLimb>(x[i]) - y[i] - borrow;
      z[i] = static_cast<Limb>(t);
      borrow = static_cast<Limb>(t >> (2 * kLimbBits - 1));
    }
    return borrow;
  }
};

// RowLoops: products of n limbs by one limb, with Multiplier's products of two limbs.
template <typename Multiplier>
struct RowLoops : SumLoops {
  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
      const LimbPair p = Multiplier::MulAdd(x[i], y, carry, 0);
      z[i] = p.low;
      carry = p.high;
    }
    return carry;
  }

  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
      const LimbPair p = Multiplier::MulAdd(x[i], y, carry, z[i]);
      z[i] = p.low;
      carry = p.high;
    }
    return carry;
  }

  // carry < B: p.high is B - 1 only if p.low is 0, which borrows nothing.
  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
      const LimbPair p = Multiplier::MulAdd(x[i], y, carry, 0);
      carry = static_cast<Limb>(p.high + (z[i] < p.low));
      z[i] = static_cast<Limb>(z[i] - p.low);
    }
    return carry;
  }

  static LimbPair Square(Limb x) { return Multiplier::MulAdd(x, x, 0, 0); }
};

// OperandScanningLoops: schoolbook products and Montgomery reduction with Rows's products of n
// limbs by one limb.
// Source: Knuth TAOCP 2, 4.3.1, algorithm M; Koc, Acar and Kaliski, Analyzing and comparing
//         Montgomery multiplication algorithms, 1996, SOS.
template <typename Rows>
struct OperandScanningLoops {
  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    z[m] = Rows::Mul1(z, x, m, y[0]);
    for (size_t i = 1; i < n; ++i) z[m + i] = Rows::MulAdd1(z + i, x, m, y[i]);
  }

  // Products of different limbs are computed once and doubled, then the squares are added.
  static void Square(Limb* z, const Limb* x, size_t n) {
    if (n > 1) {
      z[n] = Rows::Mul1(z + 1, x + 1, n - 1, x[0]);
      for (size_t i = 1; i + 1 < n; ++i) {
        z[n + i] = Rows::MulAdd1(z + 2 * i + 1, x + i + 1, n - 1 - i, x[i]);
      }
    }
    z[0] = 0;
    z[2 * n - 1] = 0;
    Limb carry = 0;    // of the sums: 0 or 1
    Limb shifted = 0;  // top bit of the limb below
    for (size_t i = 0; i < n; ++i) {
      const LimbPair s = Rows::Square(x[i]);
      const Limb low = static_cast<Limb>(z[2 * i] << 1 | shifted);
      const Limb high = static_cast<Limb>(z[2 * i + 1] << 1 | z[2 * i] >> (kLimbBits - 1));
      shifted = z[2 * i + 1] >> (kLimbBits - 1);
      Limb t = static_cast<Limb>(low + carry);
      carry = t < carry;
      z[2 * i] = static_cast<Limb>(t + s.low);
      carry |= z[2 * i] < t;
      t = static_cast<Limb>(high + carry);
      carry = t < carry;
      z[2 * i + 1] = static_cast<Limb>(t + s.high);
      carry |= z[2 * i + 1] < t;
    }
  }

  // z := z + carry * B^n, below 2 m, reduced modulo m.
  // Shapes: z[n], t[n] spare, m[n].
  static void StoreReduced(Limb* z, Limb* t, Limb carry, const Limb* m, size_t n) {
    const Limb borrow = Rows::Subtract(t, z, m, n);
    // carry < borrow only if z < m. A mask, since the limbs may be secret.
    const Limb keep = static_cast<Limb>(0 - static_cast<Limb>(carry < borrow));
    for (size_t i = 0; i < n; ++i) z[i] = static_cast<Limb>((z[i] & keep) | (t[i] & ~keep));
  }

  // Step i makes t[i] zero and stores the carry of its row there. One addition at the end adds all
  // carries.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    for (size_t i = 0; i < n; ++i) {
      t[i] = Rows::MulAdd1(t + i, m, n, static_cast<Limb>(t[i] * inverse));
    }
    StoreReduced(z, t, Rows::Add(z, t + n, t, n), m, n);
  }
};

}  // namespace mirolta
