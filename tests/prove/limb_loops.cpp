// The portable loops over limbs and the divisions, compiled with limbs of 8 bits and compared with
// the definition: operands of one and two limbs are tried whole wherever that takes minutes. A row
// that does not report the fault planted in its loop fails.
//
//   limb_loops          the short form
//   limb_loops --full   all operands
#include <cstring>
#include <iterator>

#include "divide_by_limb.h"
#include "limb_basics.h"
#include "limb_kernel_tables.h"
#include "schoolbook_division.h"
#include "verdict.h"

namespace mirolta {

static_assert(kLimbBits == 8);

namespace {

const LimbKernels* current_kernels = &kWideKernels;

}  // namespace

// The divisions' loops.
const LimbKernels& CurrentLimbKernels() noexcept {
  return *current_kernels;
}

namespace {

// What the full form tries and the short one does not.
bool tries_all = false;
uint64_t cases = 0;
uint64_t wrong = 0;

// What a row checks.
struct Loops {
  LimbKernels kernels;
  Limb (*reciprocal)(Limb d);
  LimbDivisor (*prepare)(Limb d);
};
Loops Own(const LimbKernels& kernels) {
  return {kernels, Reciprocal, PrepareDivisor};
}

void Expect(bool holds) {
  ++cases;
  wrong += !holds;
}

// The least and the largest limbs, and those where halves and signs change.
constexpr Limb kEdges[] = {0, 1, 2, 15, 16, 127, 128, 129, 254, 255};
constexpr size_t kEdgeCount = std::size(kEdges);

// Guarded holds limbs between bytes that no loop may write.
class Guarded {
 public:
  explicit Guarded(uint64_t value = 0) { Set(value); }
  void Set(uint64_t value) {
    std::memset(bytes_, kGuard, sizeof bytes_);
    for (size_t i = 0; i < kMost; ++i) bytes_[kMost + i] = static_cast<Limb>(value >> (8 * i));
  }
  Limb* Get() { return bytes_ + kMost; }
  uint64_t Value(size_t n) const {
    uint64_t value = 0;
    for (size_t i = n; i-- != 0;) value = value << 8 | bytes_[kMost + i];
    return value;
  }
  // Whether the n limbs have that value, the limbs above are those of `above`, and the guards are
  // whole.
  bool Is(size_t n, uint64_t value, uint64_t above = 0) const {
    if (Value(n) != value) return false;
    for (size_t i = 0; i < kMost; ++i) {
      if (bytes_[i] != kGuard || bytes_[2 * kMost + i] != kGuard) return false;
      if (i >= n && bytes_[kMost + i] != static_cast<Limb>(above >> (8 * i))) return false;
    }
    return true;
  }

 private:
  static constexpr Limb kGuard = 0xA5;
  static constexpr size_t kMost = 8;
  Limb bytes_[3 * kMost];
};

constexpr uint64_t Range(size_t n) {
  return uint64_t{1} << (8 * n);
}
constexpr uint64_t kAbove = 0x5A5A5A5A5A5A5A5A;  // in limbs that a loop must leave
uint64_t With(uint64_t value, size_t n) {
  return (kAbove & ~(Range(n) - 1)) | value;
}

// Calls check(value) for every value of n limbs, or for those whose limbs are edges.
template <typename Check>
void ForEachValue(size_t n, bool whole, const Check& check) {
  if (whole) {
    for (uint64_t value = 0; value < Range(n); ++value) check(value);
    return;
  }
  size_t count = 1;
  for (size_t i = 0; i < n; ++i) count *= kEdgeCount;
  for (size_t index = 0; index < count; ++index) {
    uint64_t value = 0;
    for (size_t i = 0, rest = index; i < n; ++i, rest /= kEdgeCount) {
      value = value << 8 | kEdges[rest % kEdgeCount];
    }
    check(value);
  }
}

// The sums are also computed in place of either operand, and of both.
void CheckSums(const Loops& loops) {
  const LimbKernels& k = loops.kernels;
  for (size_t n = 0; n <= 2; ++n) {
    const auto check = [&](uint64_t xv, uint64_t yv) {
      const uint64_t top = Range(n);
      Guarded x(With(xv, n)), y(With(yv, n)), z(kAbove);
      Expect(k.add(z.Get(), x.Get(), y.Get(), n) == (xv + yv) / top &&
             z.Is(n, (xv + yv) % top, kAbove) && x.Is(n, xv, kAbove) && y.Is(n, yv, kAbove));
      Expect(k.subtract(z.Get(), x.Get(), y.Get(), n) == (xv < yv) &&
             z.Is(n, (top + xv - yv) % top, kAbove));
      k.add(x.Get(), x.Get(), y.Get(), n);
      Expect(x.Is(n, (xv + yv) % top, kAbove));
      k.subtract(y.Get(), x.Get(), y.Get(), n);
      Expect(y.Is(n, xv, kAbove));
      k.add(y.Get(), y.Get(), y.Get(), n);
      Expect(y.Is(n, 2 * xv % top, kAbove));
      k.subtract(y.Get(), y.Get(), y.Get(), n);
      Expect(y.Is(n, 0, kAbove));
    };
    ForEachValue(n, true, [&](uint64_t xv) {
      ForEachValue(n, n < 2 || tries_all, [&](uint64_t yv) { check(xv, yv); });
    });
  }
}

void CheckRows(const Loops& loops) {
  const LimbKernels& k = loops.kernels;
  for (size_t n = 0; n <= 2; ++n) {
    const uint64_t top = Range(n);
    ForEachValue(n, n < 2 || tries_all, [&](uint64_t xv) {
      ForEachValue(1, n < 2 || tries_all, [&](uint64_t y) {
        Guarded x(With(xv, n)), z(kAbove);
        Expect(k.mul1(z.Get(), x.Get(), n, static_cast<Limb>(y)) == xv * y / top &&
               z.Is(n, xv * y % top, kAbove) && x.Is(n, xv, kAbove));
        k.mul1(x.Get(), x.Get(), n, static_cast<Limb>(y));
        Expect(x.Is(n, xv * y % top, kAbove));
        ForEachValue(n, n < 2, [&](uint64_t zv) {
          x.Set(With(xv, n));
          z.Set(With(zv, n));
          Expect(k.mul_add1(z.Get(), x.Get(), n, static_cast<Limb>(y)) == (zv + xv * y) / top &&
                 z.Is(n, (zv + xv * y) % top, kAbove));
          z.Set(With(zv, n));
          // The borrow is the least that makes the difference at least zero.
          const uint64_t borrow = xv * y <= zv ? 0 : (xv * y - zv + top - 1) / top;
          Expect(k.mul_sub1(z.Get(), x.Get(), n, static_cast<Limb>(y)) == borrow &&
                 z.Is(n, zv + borrow * top - xv * y, kAbove));
        });
        k.mul_add1(x.Get(), x.Get(), n, static_cast<Limb>(y));
        Expect(x.Is(n, (xv + xv * y) % top, kAbove));
      });
    });
  }
}

void CheckProducts(const Loops& loops) {
  const LimbKernels& k = loops.kernels;
  for (size_t m = 1; m <= 5; ++m) {
    for (size_t n = 1; n <= m && m + n <= 7; ++n) {
      const auto check = [&](uint64_t xv, uint64_t yv) {
        Guarded x(With(xv, m)), y(With(yv, n)), z(kAbove);
        k.multiply(z.Get(), x.Get(), m, y.Get(), n);
        Expect(z.Is(m + n, xv * yv, kAbove) && x.Is(m, xv, kAbove) && y.Is(n, yv, kAbove));
      };
      if (m <= 2) {
        ForEachValue(m, n == 1 || tries_all, [&](uint64_t xv) {
          ForEachValue(n, true, [&](uint64_t yv) { check(xv, yv); });
        });
      } else if (m == 3 && n <= 2) {
        ForEachValue(3, false, [&](uint64_t xv) {
          ForEachValue(n, n == 1 || tries_all, [&](uint64_t yv) { check(xv, yv); });
        });
      } else if (tries_all || m + n <= 5) {
        const auto at_edges = [&](uint64_t xv) {
          // Of the longer ones, the limbs that carry most.
          for (const uint64_t yv : {Range(n) - 1, Range(n) - 2, Range(n) - 255, Range(n) / 2})
            check(xv, yv);
        };
        ForEachValue(m, false, at_edges);
      }
    }
  }
  for (size_t n = 1; n <= 4; ++n) {
    ForEachValue(n, n < 3 || (n == 3 && tries_all), [&](uint64_t xv) {
      Guarded x(With(xv, n)), z(n == 4 ? 0 : kAbove);
      k.square(z.Get(), x.Get(), n);
      Expect(z.Is(2 * n, xv * xv, kAbove) && x.Is(n, xv, kAbove));
    });
  }
}

Limb MinusInverse(Limb m) {
  for (uint32_t inverse = 0;; ++inverse) {
    if (static_cast<Limb>(m * inverse + 1) == 0) return static_cast<Limb>(inverse);
  }
}

// Against z * B^n = t mod m, z < m.
void CheckReduction(const Loops& loops) {
  const LimbKernels& k = loops.kernels;
  const auto check = [&](size_t n, uint64_t mv, uint64_t tv) {
    if (mv % 2 == 0 || tv >= mv * Range(n)) return;
    Guarded m(With(mv, n)), t(With(tv, 2 * n)), z(kAbove);
    k.reduce(z.Get(), t.Get(), m.Get(), n, MinusInverse(static_cast<Limb>(mv)));
    const uint64_t zv = z.Value(n);
    Expect(zv < mv && zv * Range(n) % mv == tv % mv && z.Is(n, zv, kAbove) && m.Is(n, mv, kAbove) &&
           t.Is(2 * n, t.Value(2 * n), kAbove));
  };
  ForEachValue(1, true,
               [&](uint64_t mv) { ForEachValue(2, true, [&](uint64_t tv) { check(1, mv, tv); }); });
  for (size_t n = 2; n <= 3; ++n) {
    ForEachValue(n, n == 2 && tries_all, [&](uint64_t mv) {
      ForEachValue(n, false, [&](uint64_t high) {
        if (n == 2) {
          ForEachValue(2, false, [&](uint64_t low) { check(2, mv, high << 16 | low); });
        } else if (tries_all) {
          for (const uint64_t low : {0x000000u, 0x0000FFu, 0xFFFFFFu, 0x800001u})
            check(3, mv, high << 24 | low);
        }
      });
    });
  }
}

void CheckReciprocals(const Loops& loops) {
  for (uint32_t d = 128; d < 256; ++d) {
    const Limb expected = static_cast<Limb>(65535 / d - 256);
    Expect(ReciprocalByProducts(static_cast<Limb>(d)) == expected);
    Expect(loops.reciprocal(static_cast<Limb>(d)) == expected);
    for (uint32_t d0 = 0; d0 < 256; ++d0) {
      Expect(Reciprocal3By2(static_cast<Limb>(d), static_cast<Limb>(d0)) ==
             0xFFFFFF / (256 * d + d0) - 256);
    }
  }
}

void CheckDivisionsByLimb(const Loops& loops) {
  for (size_t n = 0; n <= 3; ++n) {
    for (uint32_t d = 1; d < 256; ++d) {
      const LimbDivisor divisor = loops.prepare(static_cast<Limb>(d));
      ForEachValue(n, n < 2 || (n == 2 && tries_all), [&](uint64_t av) {
        Guarded a(With(av, n)), q(kAbove);
        Expect(DivideByLimb(q.Get(), a.Get(), n, divisor) == av % d && q.Is(n, av / d, kAbove) &&
               a.Is(n, av, kAbove));
        Expect(ModLimb(a.Get(), n, divisor) == av % d);
        DivideByLimb(a.Get(), a.Get(), n, divisor);
        Expect(a.Is(n, av / d, kAbove));
        a.Set(With(av, n));
        Limb r[kRepeatedDivisions];
        DivideRepeatedly(r, a.Get(), n, divisor);
        uint64_t rest = av;
        bool holds = true;
        for (const Limb one : r) {
          holds = holds && one == rest % d;
          rest /= d;
        }
        Expect(holds && a.Is(n, rest, kAbove));
      });
    }
  }
}

// Two limbs are the shortest divisors. Every one of them is tried; the window's limbs are edges and
// those of the divisor, at which quotient limbs are corrected.
void CheckSchoolbook(const Loops& loops) {
  current_kernels = &loops.kernels;
  const auto check = [](size_t m, size_t n, uint64_t av, uint64_t dv) {
    if (dv < Range(n) / 2 || av >> (8 * (m - n)) >= dv) return;
    Guarded a(With(av, m)), d(With(dv, n)), q(kAbove);
    const Limb reciprocal = Reciprocal3By2(d.Get()[n - 1], d.Get()[n - 2]);
    Expect(SchoolbookDivide(q.Get(), a.Get(), m, d.Get(), n, reciprocal, false) &&
           q.Is(m - n, av / dv, kAbove) && a.Value(n) == av % dv && d.Is(n, dv, kAbove) &&
           a.Is(m, a.Value(m), kAbove));
  };
  const auto near_divisor = [&](size_t m, size_t n, uint64_t dv) {
    for (uint64_t below = 1; below <= 3; ++below) {
      ForEachValue(m - n, m - n == 1,
                   [&](uint64_t low) { check(m, n, (dv - below) << (8 * (m - n)) | low, dv); });
    }
    for (const uint64_t q : {Range(m - n) - 1, Range(m - n) / 2, uint64_t{1}}) {
      for (uint64_t r = 0; r < 3; ++r) {
        check(m, n, q * dv + r, dv);
        check(m, n, q * dv + dv - 1 - r, dv);
      }
    }
  };
  ForEachValue(2, tries_all, [&](uint64_t dv) {
    near_divisor(3, 2, dv);
    near_divisor(4, 2, dv);
    ForEachValue(2, false, [&](uint64_t high) {
      ForEachValue(1, true, [&](uint64_t low) { check(3, 2, high << 8 | low, dv); });
    });
  });
  ForEachValue(3, false, [&](uint64_t dv) {
    near_divisor(4, 3, dv);
    near_divisor(5, 3, dv);
    if (tries_all) ForEachValue(4, false, [&](uint64_t av) { check(4, 3, av, dv); });
  });
  ForEachValue(4, false, [&](uint64_t dv) { near_divisor(6, 4, dv); });
  current_kernels = &kWideKernels;
}

// Loops with a planted fault each, in few operands.
Limb AddLosingCarry(Limb* z, const Limb* x, const Limb* y, size_t n) {
  const bool is_rare = n == 2 && x[0] == 255 && y[0] == 255;
  const Limb carry = kWideKernels.add(z, x, y, n);
  return is_rare ? Limb{0} : carry;
}
Limb MulSub1LosingBorrow(Limb* z, const Limb* x, size_t n, Limb y) {
  const bool is_rare = n == 2 && x[1] == 255 && y == 255 && z[1] == 0;
  const Limb borrow = kWideKernels.mul_sub1(z, x, n, y);
  return static_cast<Limb>(is_rare ? borrow - 1 : borrow);
}
void MultiplyBeyond(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
  kWideKernels.multiply(z, x, m, y, n);
  if (m == 2 && n == 2 && x[1] == 255 && y[1] == 255) z[4] = 0;
}
void ReduceOnceTooFew(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
  kWideKernels.reduce(z, t, m, n, inverse);
  if (n == 1 && z[0] == 0 && m[0] == 251) z[0] = m[0];
}
Limb AddWithoutCarry(Limb* z, const Limb* x, const Limb* y, size_t n) {
  kWideKernels.add(z, x, y, n);
  return 0;
}
Limb ReciprocalTooSmall(Limb d) {
  return static_cast<Limb>(Reciprocal(d) - (d == 255));
}
LimbDivisor PrepareTooLarge(Limb d) {
  LimbDivisor divisor = PrepareDivisor(d);
  if (d == 255) ++divisor.reciprocal;
  return divisor;
}

Loops Planted() {
  Loops loops = {kWideKernels, ReciprocalTooSmall, PrepareTooLarge};
  loops.kernels.add = AddLosingCarry;
  loops.kernels.mul_sub1 = MulSub1LosingBorrow;
  loops.kernels.multiply = MultiplyBeyond;
  loops.kernels.reduce = ReduceOnceTooFew;
  return loops;
}
Loops PlantedInAddBack() {
  Loops loops = Own(kWideKernels);
  loops.kernels.add = AddWithoutCarry;
  return loops;
}

struct Row {
  const char* name;
  void (*check)(const Loops&);
  Loops loops;
  bool is_planted;  // must be reported
};

// A planted fault is found by the short form.
bool Run(const Row& row, bool is_full) {
  tries_all = is_full && !row.is_planted;
  cases = 0;
  wrong = 0;
  row.check(row.loops);
  return prove::Report(row.name, cases, "cases", wrong, row.is_planted);
}

int CheckAll(bool is_full) {
  const Loops wide = Own(kWideKernels), half = Own(kHalfKernels), planted = Planted();
  const Row rows[] = {
      {"sums", CheckSums, wide, false},
      {"sums, a planted fault", CheckSums, planted, true},
      {"rows", CheckRows, wide, false},
      {"rows by half products", CheckRows, half, false},
      {"rows, a planted fault", CheckRows, planted, true},
      {"products by columns", CheckProducts, wide, false},
      {"products by rows", CheckProducts, half, false},
      {"products, a planted fault", CheckProducts, planted, true},
      {"Montgomery reduction by columns", CheckReduction, wide, false},
      {"Montgomery reduction by rows", CheckReduction, half, false},
      {"Montgomery reduction, a planted fault", CheckReduction, planted, true},
      {"reciprocals", CheckReciprocals, wide, false},
      {"reciprocals, a planted fault", CheckReciprocals, planted, true},
      {"divisions by a limb", CheckDivisionsByLimb, wide, false},
      {"divisions by a limb, a planted fault", CheckDivisionsByLimb, planted, true},
      {"schoolbook division", CheckSchoolbook, wide, false},
      {"schoolbook division, a planted fault", CheckSchoolbook, PlantedInAddBack(), true},
  };
  int failed = 0;
  for (const Row& row : rows) failed += !Run(row, is_full);
  return failed == 0 ? 0 : 1;
}

}  // namespace

}  // namespace mirolta

int main(int argc, char** argv) {
  return mirolta::CheckAll(mirolta::prove::WantsAll(argc, argv));
}
