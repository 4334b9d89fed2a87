#include "schoolbook_division.h"

#include "limb_basics.h"
#include "operand_scanning.h"

namespace mirolta {

namespace {

// Short divisors: rows are subtracted from the window without a call. The correction of a quotient
// limb is a branch, since a step is too short to hide the masked one.
struct ShortRows {
  static constexpr size_t kMostLimbs = 18;
  static constexpr bool kBranches = true;
  static Limb Stored(Limb x) { return x; }
  static void Convert(Limb*, size_t) {}
  static Limb SubtractRow(const LimbKernels& k, Limb* z, const Limb* x, size_t n, Limb y) {
    return n < 4 ? RowLoops<Products>::MulSub1(z, x, n, y) : k.mul_sub1(z, x, n, y);
  }
  static Limb AddBack(const LimbKernels& k, Limb* z, const Limb* x, size_t n) {
    return k.add(z, z, x, n);
  }
};

// Long divisors: the window is kept as the complement of its limbs. Subtracting a row from a number
// is adding it to the complement, with the same carry, and the kernels add rows faster. A
// mispredicted branch would delay the next step by more than the masked correction costs.
struct LongRows {
  static constexpr bool kBranches = false;
  static Limb Stored(Limb x) { return static_cast<Limb>(~x); }
  static void Convert(Limb* a, size_t n) { ComplementLimbs(a, a, n); }
  static Limb SubtractRow(const LimbKernels& k, Limb* z, const Limb* x, size_t n, Limb y) {
    return k.mul_add1(z, x, n, y);
  }
  static Limb AddBack(const LimbKernels& k, Limb* z, const Limb* x, size_t n) {
    return k.subtract(z, z, x, n);
  }
};

// SchoolbookDivide with rows of one of these kinds. Not inlined: each needs all registers.
template <typename Rows>
__attribute__((noinline)) bool DivideBy(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb v,
                                        bool truncates) {
  const LimbKernels& k = CurrentLimbKernels();
  const LimbPair top = {d[n - 2], d[n - 1]};
  // The window's two top limbs are kept in registers between the steps.
  LimbPair u = {a[m - 2], a[m - 1]};
  const size_t unused = truncates ? n - 2 : 0;
  Rows::Convert(a + unused, m - unused);
  for (size_t j = m - n; j-- != 0;) {
    const size_t omitted = truncates && j + 2 < n ? n - 2 - j : 0;
    const size_t low = n - 2 - omitted;  // limbs of the row below the top two
    const Limb* const x = d + omitted;
    Limb* const w = a + j + omitted;
    if (u.high == top.high && u.low == top.low) {
      if (omitted != 0) return false;
      // The window is below d * B, and with equal top limbs the quotient limb is B - 1 exactly.
      w[n - 1] = Rows::Stored(u.low);
      Rows::SubtractRow(k, w, d, n, kLimbMax);
      u = {Rows::Stored(w[n - 2]), Rows::Stored(w[n - 1])};
      q[j] = kLimbMax;
      continue;
    }
    // A quotient limb of three limbs by two, algorithm 5 of Moeller and Granlund.
    const LimbPair estimate = AddPair(Product(v, u.high), u);
    Limb quotient = estimate.high;
    u = {Rows::Stored(w[low]), static_cast<Limb>(u.low - quotient * top.high)};
    u = SubtractPair(SubtractPair(u, Product(top.low, quotient)), top);
    ++quotient;
    if constexpr (Rows::kBranches) {
      if (u.high >= estimate.low) {
        --quotient;
        u = AddPair(u, top);
      }
    } else {
      const Limb over = static_cast<Limb>(0 - static_cast<Limb>(u.high >= estimate.low));
      quotient = static_cast<Limb>(quotient + over);
      u = AddPair(u, {static_cast<Limb>(top.low & over), static_cast<Limb>(top.high & over)});
    }
    if (u.high > top.high || (u.high == top.high && u.low >= top.low)) {
      ++quotient;
      u = SubtractPair(u, top);
    }
    const Limb borrow = Rows::SubtractRow(k, w, x, low, quotient);
    const Limb before = u.high;
    u = SubtractPair(u, {borrow, 0});
    if (u.high > before) {
      w[low] = Rows::Stored(u.low);
      u.high = static_cast<Limb>(u.high + top.high + Rows::AddBack(k, w, x, low + 1));
      u.low = Rows::Stored(w[low]);
      --quotient;
    }
    q[j] = quotient;
  }
  if (!truncates) Rows::Convert(a, n - 2);
  a[n - 1] = u.high;
  a[n - 2] = u.low;
  return true;
}

}  // namespace

bool SchoolbookDivide(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb reciprocal,
                      bool truncates) noexcept {
  return n <= ShortRows::kMostLimbs ? DivideBy<ShortRows>(q, a, m, d, n, reciprocal, truncates)
                                    : DivideBy<LongRows>(q, a, m, d, n, reciprocal, truncates);
}

}  // namespace mirolta
