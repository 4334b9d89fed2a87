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
      const DoubleLimb t = static_cast<DoubleLimb>(x[i]) + y[i] + carry;
      z[i] = static_cast<Limb>(t);
      carry = static_cast<Limb>(t >> kLimbBits);
    }
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb borrow = 0;
    for (size_t i = 0; i < n; ++i) {
      const DoubleLimb t = static_cast<DoubleLimb>(x[i]) - y[i] - borrow;
      z[i] = static_cast<Limb>(t);
      borrow = static_cast<Limb>(t >> (2 * kLimbBits - 1));
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

// OperandScanningLoops: products and reductions, row by row with Rows.
template <typename Rows>
struct OperandScanningLoops {
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

  // z := the value of z and the carry above it, below 2 m, less m unless it is below m. t[n] is
  // spare.
  static void StoreReduced(Limb* z, Limb* t, Limb carry, const Limb* m, size_t n) {
    const Limb borrow = Rows::Subtract(t, z, m, n);
    // carry - borrow is 0 or 1 when the difference is the result, -1 when z already is.
    if (carry >= borrow) {
      for (size_t i = 0; i < n; ++i) z[i] = t[i];
    }
  }

  // Each row makes the lowest limb zero, so that its place can keep the row's carry; the carries
  // are added in one pass at the end.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    for (size_t i = 0; i < n; ++i) {
      t[i] = Rows::MulAdd1(t + i, m, n, static_cast<Limb>(t[i] * inverse));
    }
    StoreReduced(z, t, Rows::Add(z, t + n, t, n), m, n);
  }
};

// MontgomeryOf: z := x * y / B^kCount mod m, below m, for a count that the compiler knows, so that all
// sums stay in registers. Each round adds a row of x * y and the multiple of m that makes the lowest
// limb zero, and drops that limb. With t < m + y before a round the sums stay below (m + y) * B, and
// t < m + y holds after it.
// Shapes: x[kCount], y[kCount], m[kCount], z[kCount]; z may be x or y.
// Source: Koc, Acar and Kaliski 1996, FIOS.
template <size_t kCount>
inline void MontgomeryOf(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t[kCount + 1] = {};
  for (size_t i = 0; i < kCount; ++i) {
    const Limb factor = x[i];
    LimbPair row = WideProducts::MulAdd(y[0], factor, t[0], 0);
    const Limb multiple = static_cast<Limb>(row.low * inverse);
    LimbPair zero = WideProducts::MulAdd(m[0], multiple, row.low, 0);
    for (size_t j = 1; j < kCount; ++j) {
      row = WideProducts::MulAdd(y[j], factor, t[j], row.high);
      zero = WideProducts::MulAdd(m[j], multiple, row.low, zero.high);
      t[j - 1] = zero.low;
    }
    const DoubleLimb top = static_cast<DoubleLimb>(row.high) + zero.high + t[kCount];
    t[kCount - 1] = static_cast<Limb>(top);
    t[kCount] = static_cast<Limb>(top >> kLimbBits);
  }
  Limb difference[kCount];
  const Limb borrow = SumLoops::Subtract(difference, t, m, kCount);
  const Limb keep = static_cast<Limb>(0 - static_cast<Limb>(t[kCount] < borrow));
  for (size_t i = 0; i < kCount; ++i) z[i] = (t[i] & keep) | (difference[i] & ~keep);
}

// ProductScanningLoops: products and reductions column by column, where a product of two limbs is one
// instruction: the sums of two neighbouring columns stay in registers until their limbs are stored,
// and a limb that is loaded serves both.
// Source: Knuth TAOCP 2, 4.3.1; Koc, Acar and Kaliski, Analyzing and comparing Montgomery
// multiplication algorithms, 1996.
struct ProductScanningLoops : OperandScanningLoops<RowLoops<WideProducts>> {
  // The sum of a column: fewer than B products of less than B^2, so the limb above counts their
  // carries and does not overflow.
  struct Sum {
    DoubleLimb low = 0;
    Limb high = 0;

    void Add(DoubleLimb t) {
      low += t;
      if (low < t) ++high;
    }
    void AddProduct(Limb x, Limb y) { Add(static_cast<DoubleLimb>(x) * y); }
    void Double() {
      high = static_cast<Limb>(high << 1 | static_cast<Limb>(low >> (2 * kLimbBits - 1)));
      low <<= 1;
    }
    // Leaves what the next column gets from this one; returns this one's limb.
    Limb Next() {
      const Limb limb = static_cast<Limb>(low);
      low = low >> kLimbBits | static_cast<DoubleLimb>(high) << kLimbBits;
      high = 0;
      return limb;
    }
  };

  struct Columns {
    Sum first;
    Sum second;

    // Adds the n products x[0] * y[n - 1], x[1] * y[n - 2], ... to the first column and
    // x[0] * y[n], x[1] * y[n - 1], ... to the second.
    void Add(const Limb* x, const Limb* y, size_t n) {
      if (n == 0) return;
      Limb above = y[n];
      for (; n % 4 != 0; --n) AddOne(*x++, y[n - 1], &above);
      for (; n != 0; n -= 4) {
        for (size_t i = 1; i <= 4; ++i) AddOne(*x++, y[n - i], &above);
      }
    }
    // Makes the second column, with what it gets from the first, the first; returns the first's
    // limb.
    Limb Next() {
      const Limb limb = first.Next();
      first.high = second.high;
      first.Add(second.low);
      second = Sum();
      return limb;
    }

   private:
    void AddOne(Limb x, Limb y, Limb* above) {
      first.AddProduct(x, y);
      second.AddProduct(x, *above);
      *above = y;
    }
  };

  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    Columns columns;
    for (size_t i = 0; i + 1 < m + n; i += 2) {
      // x[from] to x[to - 1] have a limb of y in both columns.
      const size_t from = i + 2 > n ? i + 2 - n : 0;
      const size_t to = i < m ? i + 1 : m;
      if (i + 1 >= n) columns.first.AddProduct(x[i + 1 - n], y[n - 1]);
      if (i + 1 < m) columns.second.AddProduct(x[i + 1], y[0]);
      columns.Add(x + from, y + (i + 1 - to), to - from);
      z[i] = columns.Next();
      z[i + 1] = columns.Next();
    }
    if ((m + n) % 2 != 0) z[m + n - 1] = columns.Next();
  }

  // The products of unlike limbs are formed once and doubled. The columns are paired so that both
  // have as many.
  static void Square(Limb* z, const Limb* x, size_t n) {
    Columns columns;
    columns.first.AddProduct(x[0], x[0]);
    z[0] = columns.Next();
    for (size_t i = 1; i < n; ++i) {
      const DoubleLimb carry = columns.first.low;
      columns = Columns();
      const size_t from = 2 * i + 1 > n ? 2 * i + 1 - n : 0;
      if (2 * i >= n) columns.first.AddProduct(x[2 * i - n], x[n - 1]);
      columns.Add(x + from, x + i, i - from);
      columns.first.Double();
      columns.second.Double();
      columns.first.Add(carry);
      columns.second.AddProduct(x[i], x[i]);
      z[2 * i - 1] = columns.Next();
      z[2 * i] = columns.Next();
    }
    z[2 * n - 1] = columns.Next();
  }

  // The factors of m take the places of the limbs that they make zero.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    Columns columns;
    const auto make_zero = [&](size_t i) {
      t[i] = static_cast<Limb>(static_cast<Limb>(columns.first.low) * inverse);
      columns.first.AddProduct(t[i], m[0]);
    };
    size_t i = n % 2;
    if (i != 0) {
      columns.first.Add(t[0]);
      make_zero(0);
      columns.Next();
    }
    for (; i < n; i += 2) {
      columns.first.Add(t[i]);
      columns.second.Add(t[i + 1]);
      columns.Add(t, m + 1, i);
      make_zero(i);
      columns.second.AddProduct(t[i], m[1]);
      columns.Next();
      make_zero(i + 1);
      columns.Next();
    }
    for (i = 0; i + 1 < n; i += 2) {
      columns.first.Add(t[n + i]);
      columns.second.Add(t[n + i + 1]);
      columns.first.AddProduct(t[i + 1], m[n - 1]);
      columns.Add(t + i + 2, m + i + 1, n - 2 - i);
      z[i] = columns.Next();
      z[i + 1] = columns.Next();
    }
    if (i < n) {
      columns.first.Add(t[2 * n - 1]);
      z[i] = columns.Next();
    }
    StoreReduced(z, t, columns.Next(), m, n);
  }
};

}  // namespace mirolta
