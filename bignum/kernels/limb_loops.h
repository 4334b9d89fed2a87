// The loops of a kernel table, for a way of forming rows: a table that has faster rows writes those
// and takes the rest from here.
#pragma once

#include "limb_kernels.h"

namespace mirolta {

// SumLoops: addition and subtraction.
struct SumLoops {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
      const Limb t = static_cast<Limb>(x[i] + carry);
      carry = t < carry;
      const Limb s = static_cast<Limb>(t + y[i]);
      carry |= s < t;
      z[i] = s;
    }
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb borrow = 0;
    for (size_t i = 0; i < n; ++i) {
      const Limb a = x[i];
      const Limb t = static_cast<Limb>(a - borrow);
      borrow = a < borrow;
      borrow |= t < y[i];
      z[i] = static_cast<Limb>(t - y[i]);
    }
    return borrow;
  }
};

// RowLoops: a row of limbs times one limb, with Multiplier's products.
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

  // The missing part stays below B: the product's high limb is at most B - 2 when its low limb and
  // the carry overflow together.
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

// BlockLoops: products and reductions, row by row with Rows.
template <typename Rows>
struct BlockLoops {
  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    z[m] = Rows::Mul1(z, x, m, y[0]);
    for (size_t i = 1; i < n; ++i) z[m + i] = Rows::MulAdd1(z + i, x, m, y[i]);
  }

  // The products of unlike limbs are formed once and doubled, then the squares are added.
  static void Square(Limb* z, const Limb* x, size_t n) {
    if (n > 1) {
      z[n] = Rows::Mul1(z + 1, x + 1, n - 1, x[0]);
      for (size_t i = 1; i + 1 < n; ++i) {
        z[n + i] = Rows::MulAdd1(z + 2 * i + 1, x + i + 1, n - 1 - i, x[i]);
      }
    }
    z[0] = 0;
    z[2 * n - 1] = 0;
    Limb carry = 0;    // of the sums
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

  // Each row makes the lowest limb zero, so that its place can keep the row's carry; the carries
  // are added in one pass at the end.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    for (size_t i = 0; i < n; ++i) {
      t[i] = Rows::MulAdd1(t + i, m, n, static_cast<Limb>(t[i] * inverse));
    }
    const Limb carry = Rows::Add(z, t + n, t, n);
    const Limb borrow = Rows::Subtract(t, z, m, n);
    // carry - borrow is 0 or 1 when the difference is the result, -1 when z already is.
    if (carry >= borrow) {
      for (size_t i = 0; i < n; ++i) z[i] = t[i];
    }
  }
};

}  // namespace mirolta
