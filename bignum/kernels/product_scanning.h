// Loops over limbs by product scanning: products column by column.
#pragma once

#include "operand_scanning.h"

namespace mirolta {

// ProductScanningLoops: products and Montgomery reduction for processors that multiply two limbs in
// one instruction. The sums of two adjacent columns stay in registers until their limbs are stored,
// and a limb that is loaded serves both.
// Source: Comba 1990; Koc, Acar and Kaliski, Analyzing and comparing Montgomery multiplication
//         algorithms, 1996, product scanning.
struct ProductScanningLoops : OperandScanningLoops<RowLoops<WideProducts>> {
  // The sum of a column: fewer than B products, each below B^2, so that high < B counts the
  // carries.
  struct Sum {
    DoubleLimb low = 0;
    Limb high = 0;

    // Adds t < (B - 1) * B, so that the upper limb alone shows the carry: compilers may turn a
    // comparison of two limbs into a branch, and limbs may be secret.
    void Add(DoubleLimb t) {
      const Limb before = static_cast<Limb>(low >> kLimbBits);
      low += t;
      high = static_cast<Limb>(high + (static_cast<Limb>(low >> kLimbBits) < before));
    }
    void AddProduct(Limb x, Limb y) { Add(static_cast<DoubleLimb>(x) * y); }
    void Double() {
      high = static_cast<Limb>(high << 1 | static_cast<Limb>(low >> (2 * kLimbBits - 1)));
      low <<= 1;
    }
    // Returns the column's limb and keeps the carry into the next column.
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
    // Returns the first column's limb. The second column, plus the first's carry, becomes the
    // first.
    Limb Next() {
      const Limb limb = first.Next();
      second.Add(first.low);
      first = second;
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

  // Products of different limbs are computed once and doubled. The columns of a pair have equally
  // many.
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

  // The multipliers of m are stored in place of the limbs that they make zero.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    Columns columns;
    const auto cancel = [&](size_t i) {
      t[i] = static_cast<Limb>(static_cast<Limb>(columns.first.low) * inverse);
      columns.first.AddProduct(t[i], m[0]);
    };
    size_t i = n % 2;
    if (i != 0) {
      columns.first.Add(t[0]);
      cancel(0);
      columns.Next();
    }
    for (; i < n; i += 2) {
      columns.first.Add(t[i]);
      columns.second.Add(t[i + 1]);
      columns.Add(t, m + 1, i);
      cancel(i);
      columns.second.AddProduct(t[i], m[1]);
      columns.Next();
      cancel(i + 1);
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
