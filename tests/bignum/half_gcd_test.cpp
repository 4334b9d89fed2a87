// Half of Euclid's algorithm with lowered least lengths: its matrices against their definition, and the
// sequence's end against the one by single steps and the peer.
#include "half_gcd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "gcd.h"
#include "lehmer_gcd.h"
#include "limb_testing.h"

namespace mirolta {
namespace {

constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);
constexpr HalfGcdLengths kLowered = {kLeastHalfGcd, 2 * kLeastHalfGcd, 2 * kLeastHalfGcd};
constexpr HalfGcdLengths kNever = {SIZE_MAX, SIZE_MAX, SIZE_MAX};

// z := z + x * y and z := z - x * y; the peer of the Windows builds has neither.
void AddProduct(Mpz& z, const Mpz& x, const Mpz& y) {
  Mpz product;
  mpz_mul(product, x, y);
  mpz_add(z, z, product);
}
void SubtractProduct(Mpz& z, const Mpz& x, const Mpz& y) {
  Mpz product;
  mpz_mul(product, x, y);
  mpz_sub(z, z, product);
}
void Exchange(Mpz& x, Mpz& y) {
  Mpz z;
  mpz_set(z, x);
  mpz_set(x, y);
  mpz_set(y, z);
}
bool IsAbove(mpz_srcptr x, mpz_srcptr y) {
  return mpz_cmp(x, y) > 0;
}
bool IsOne(mpz_srcptr x) {
  return mpz_cmp_ui(x, 1) == 0;
}

// Entries of room limbs each, as a matrix and as numbers of the peer.
class TestMatrix {
 public:
  explicit TestMatrix(size_t room) : limbs_(4 * room + 1, kGuard) {
    PlaceEntries(&matrix, limbs_.data(), room);
  }
  void TakeNumbers() {
    const Limb* const entries[] = {matrix.first[0], matrix.first[1], matrix.second[0],
                                   matrix.second[1]};
    for (size_t i = 0; i < 4; ++i) Import(entry[i], Limbs(entries[i], entries[i] + matrix.n));
  }
  bool GuardIsWhole() const { return limbs_.back() == kGuard; }

  EuclidMatrix matrix;
  Mpz entry[4];  // u0, v0, u1, v1

 private:
  Limbs limbs_;
};

// The pair that a matrix gives from x and y.
void Reduced(Mpz& x1, Mpz& y1, const TestMatrix& m, const Mpz& x, const Mpz& y) {
  mpz_mul(x1, m.entry[0], x);
  SubtractProduct(x1, m.entry[1], y);
  mpz_mul(y1, m.entry[3], y);
  SubtractProduct(y1, m.entry[2], x);
  if (m.matrix.odd) {
    mpz_neg(x1, x1);
    mpz_neg(y1, y1);
  }
}

size_t LimbsOf(mpz_srcptr z) {
  return mpz_sgn(z) == 0 ? 0 : (mpz_sizeinbase(z, 2) + kLimbBits - 1) / kLimbBits;
}

// Whether consecutive remainders of x, y with these cofactors are those that Euclid's steps give: the
// determinant is 1 or -1, no cofactor is negative, and x1 > y1 > 0.
void ExpectSteps(const TestMatrix& m, const Mpz& x1, const Mpz& y1) {
  Mpz determinant;
  mpz_mul(determinant, m.entry[0], m.entry[3]);
  SubtractProduct(determinant, m.entry[1], m.entry[2]);
  if (m.matrix.odd) mpz_neg(determinant, determinant);
  EXPECT_TRUE(IsOne(determinant));
  EXPECT_TRUE(IsAbove(y1, Mpz()));
  EXPECT_TRUE(IsAbove(x1, y1));
}

// Checks HalfGcd of x and y, and the same steps for the extreme limbs below. Returns whether there were any.
bool CheckHalfGcd(const Limbs& x, const Limbs& y, size_t least) {
  const size_t n = x.size(), floor = n / 2 + 1;
  for (const size_t low : {size_t{1}, n / 2 + 1, 3 * n}) {
    for (int kind = 0; kind < 4; ++kind) {
      Limbs all_x(low, kind % 2 == 0 ? 0 : kLimbMax), all_y(low, kind < 2 ? 0 : kLimbMax);
      all_x.insert(all_x.end(), x.begin(), x.end());
      all_y.insert(all_y.end(), y.begin(), y.end());
      Mpz px, py, low_x, low_y, x1, y1;
      Import(px, x);
      Import(py, y);
      Import(low_x, all_x);
      Import(low_y, all_y);
      TestMatrix m(HalfGcdEntry(n));
      Limbs scratch(HalfGcdScratch(n, low, least).Value() + 1, kGuard);
      size_t high =
          HalfGcd(all_x.data() + low, all_y.data() + low, n, &m.matrix, scratch.data(), least);
      EXPECT_TRUE(m.GuardIsWhole());
      EXPECT_EQ(scratch.back(), kGuard);
      m.TakeNumbers();
      if (!m.matrix.Changed()) {
        EXPECT_EQ(high, n);
        EXPECT_FALSE(m.matrix.odd);
        return false;
      }
      Reduced(x1, y1, m, px, py);
      ExpectSteps(m, x1, y1);
      EXPECT_EQ(Limbs(all_x.begin() + static_cast<ptrdiff_t>(low), all_x.end()), Export(x1, n));
      EXPECT_EQ(Limbs(all_y.begin() + static_cast<ptrdiff_t>(low), all_y.end()), Export(y1, n));
      EXPECT_EQ(high, LimbsOf(x1));
      EXPECT_GT(LimbsOf(y1), floor);
      mpz_sub(x1, x1, y1);
      EXPECT_GT(LimbsOf(x1), floor);
      EXPECT_LE(m.matrix.n, n - floor);

      Reduced(x1, y1, m, low_x, low_y);
      ExpectSteps(m, x1, y1);
      high = JoinLowLimbs(m.matrix, all_x.data(), all_y.data(), low, high, scratch.data());
      EXPECT_EQ(scratch.back(), kGuard);
      EXPECT_EQ(high, LimbsOf(x1));
      EXPECT_EQ(all_x, Export(x1, low + n));
      EXPECT_EQ(all_y, Export(y1, low + n));
    }
  }
  return true;
}

// x with a top limb that is not zero, and y <= x.
void Order(Limbs* x, Limbs* y) {
  if (x->back() == 0) x->back() = 1 + Below(1000);
  for (size_t i = x->size(); i-- != 0;) {
    if ((*x)[i] == (*y)[i]) continue;
    if ((*x)[i] < (*y)[i]) x->swap(*y);
    return;
  }
}

// Fibonacci numbers, which take the most steps: the largest neighbours of n limbs, for growing n.
class Fibonacci {
 public:
  void Find(Limbs* x, Limbs* y, size_t n) {
    Mpz next;
    for (;;) {
      mpz_add(next, a_, b_);
      if (LimbsOf(next) > n) break;
      mpz_set(a_, b_);
      mpz_set(b_, next);
    }
    *x = Export(b_, n);
    *y = Export(a_, n);
  }

 private:
  Mpz a_{1}, b_{1};
};

TEST(HalfGcdTest, MatricesAreStepsOfEveryNumberWithTheseUpperLimbs) {
  if (!kHasHalfGcd) GTEST_SKIP() << "left out where the stack is small";
  int with_steps = 0;
  Fibonacci fibonacci;
  for (size_t n = 4; n < 70; n += 1 + n / 16) {
    for (int i = 0; i < Cases(n < 20 ? 12 : 4); ++i) {
      Limbs x = RandomLimbs(n), y = RandomLimbs(n);
      // Lengths that differ, up to those without a step.
      if (i % 4 == 1) std::fill_n(y.rbegin(), Below(static_cast<uint32_t>(n / 2)), Limb{0});
      if (i % 4 == 2) y = x;
      if (i % 4 == 2) y[Below(static_cast<uint32_t>(n))] ^= 1;
      Order(&x, &y);
      with_steps += CheckHalfGcd(x, y, kLeastHalfGcd);
      if (testing::Test::HasFailure()) FAIL() << n;
    }
    Limbs x, y;
    fibonacci.Find(&x, &y, n);
    with_steps += CheckHalfGcd(x, y, kLeastHalfGcd);
    EXPECT_FALSE(CheckHalfGcd(x, x, kLeastHalfGcd));
    EXPECT_FALSE(CheckHalfGcd(x, Limbs(n), kLeastHalfGcd));
  }
  EXPECT_GT(with_steps, 40);
}

// A quotient of many limbs in the middle of the sequence, at each place.
TEST(HalfGcdTest, LargeQuotientsAmongTheStepsAreRight) {
  if (!kHasHalfGcd) GTEST_SKIP() << "left out where the stack is small";
  for (const size_t n : {size_t{9}, size_t{24}, size_t{41}}) {
    for (size_t inner = 1; inner + 1 < n; inner += 1 + n / 20) {
      for (const size_t quotient : {size_t{1}, n / 5, n / 2}) {
        if (inner + quotient >= n) continue;
        // From the end of the sequence backwards: random steps, the large one, random steps.
        Mpz a, b, q;
        Import(a, Limbs(inner, kLimbMax));
        Import(b, RandomLimbs(inner));
        Import(q, Limbs(quotient, kLimbMax));
        AddProduct(b, a, q);
        Exchange(a, b);
        for (;;) {
          mpz_set_ui(q, 1 + Below(9));
          AddProduct(b, a, q);
          if (LimbsOf(b) > n) break;
          Exchange(a, b);
        }
        SubtractProduct(b, a, q);
        if (LimbsOf(a) != n) continue;
        CheckHalfGcd(Export(a, n), Export(b, n), kLeastHalfGcd);
        if (testing::Test::HasFailure()) FAIL() << n << " " << inner << " " << quotient;
      }
    }
  }
}

// A step by a division is followed by others, until the numbers have half of their limbs.
TEST(HalfGcdTest, ALargeQuotientDoesNotEndTheSteps) {
  if (!kHasHalfGcd) GTEST_SKIP() << "left out where the stack is small";
  for (const size_t n : {size_t{24}, size_t{41}}) {
    for (const size_t least : {kLeastHalfGcd, n + 1}) {
      // Not those of RandomLimbs, after whose runs of zeros a remainder may be short.
      Limbs x(n), y(n);
      for (Limbs* const limbs : {&x, &y}) {
        for (Limb& limb : *limbs) limb = static_cast<Limb>(Generator()());
      }
      x.back() |= 1;
      std::fill_n(y.rbegin(), 3, Limb{0});
      y[n - 4] |= 1;
      TestMatrix m(HalfGcdEntry(n));
      Limbs scratch(HalfGcdScratch(n, 0, least).Value());
      const size_t left = HalfGcd(x.data(), y.data(), n, &m.matrix, scratch.data(), least);
      EXPECT_LE(left, n / 2 + 3) << n << ", recursion from " << least;
    }
  }
}

TEST(HalfGcdTest, PairsOfProductsAreRight) {
  for (const size_t m : {1u, 2u, 7u, 40u, 150u, 600u}) {
    for (const size_t n : {1u, 3u, 60u, 400u, 700u}) {
      TestMatrix t(m);
      t.matrix.n = m;
      for (Limb* const entry :
           {t.matrix.first[0], t.matrix.first[1], t.matrix.second[0], t.matrix.second[1]}) {
        const Limbs limbs = RandomLimbs(m);
        std::copy(limbs.begin(), limbs.end(), entry);
      }
      t.TakeNumbers();
      const Limbs ones(n, kLimbMax);
      for (int i = 0; i < 3; ++i) {
        const Limbs x = i == 0 ? ones : RandomLimbs(n), y = i == 0 ? ones : RandomLimbs(n);
        Mpz px, py, z;
        Import(px, x);
        Import(py, y);
        Limbs z0(m + n + 2, kGuard), z1(m + n + 2, kGuard),
            scratch(PairScratch(m, n).Value() + 1, kGuard);
        MultiplyPair(t.matrix, z0.data(), z1.data(), x.data(), y.data(), n, scratch.data());
        Limbs in_turn0(m + n + 2, kGuard),
            in_turn1 = in_turn0, less(PairScratch(m, n, PairSums::kInTurn).Value() + 1, kGuard);
        MultiplyPair(t.matrix, in_turn0.data(), in_turn1.data(), x.data(), y.data(), n, less.data(),
                     PairSums::kInTurn);
        EXPECT_EQ(less.back(), kGuard);
        EXPECT_EQ(in_turn0, z0);
        EXPECT_EQ(in_turn1, z1);
        for (Limbs* const result : {&z0, &z1, &scratch}) {
          EXPECT_EQ(result->back(), kGuard);
          result->pop_back();
        }
        mpz_mul(z, t.entry[0], px);
        AddProduct(z, t.entry[1], py);
        EXPECT_EQ(z0, Export(z, m + n + 1)) << m << " by " << n;
        mpz_mul(z, t.entry[2], px);
        AddProduct(z, t.entry[3], py);
        EXPECT_EQ(z1, Export(z, m + n + 1)) << m << " by " << n;
      }
    }
  }
}

struct End {
  Limbs gcd, cofactor;
  bool odd = false;
  bool operator==(const End&) const = default;
};

End RunOf(const Limbs& x, const Limbs& y, bool with_cofactor, const HalfGcdLengths& lengths) {
  LehmerGcd run;
  EXPECT_TRUE(run.Reserve(x.size(), y.size(), with_cofactor, lengths));
  std::copy(x.begin(), x.end(), run.X());
  std::copy(y.begin(), y.end(), run.Y());
  run.Run();
  return {Limbs(run.Gcd(), run.Gcd() + run.GcdLimbs()),
          Limbs(run.Cofactor(), run.Cofactor() + run.CofactorLimbs()), run.OddSteps()};
}

// Steps found from upper halves end as single steps do: with the greatest common divisor, the cofactor
// and the parity.
void CheckEnds(const Limbs& x, const Limbs& y) {
  Mpz px, py, g;
  Import(px, x);
  Import(py, y);
  mpz_gcd(g, px, py);
  for (const auto& [a, b] : {std::pair(&x, &y), std::pair(&y, &x)}) {
    for (const bool with_cofactor : {false, true}) {
      const End end = RunOf(*a, *b, with_cofactor, kLowered);
      ASSERT_EQ(end.gcd, Export(g, LimbsOf(g)));
      ASSERT_EQ(end, RunOf(*a, *b, with_cofactor, kNever));
    }
  }
}

TEST(HalfGcdTest, SequencesEndAsThoseOfSingleSteps) {
  Fibonacci fibonacci;
  for (size_t n = 2 * kLeastHalfGcd - 2; n < 80; n += 1 + n / 20) {
    for (int i = 0; i < Cases(4); ++i) {
      const Limbs x = RandomLimbs(n);
      CheckEnds(x, RandomLimbs(n));
      CheckEnds(x, RandomLimbs(1 + Below(static_cast<uint32_t>(n))));
      Limbs next = x;
      next[0] ^= 1;
      CheckEnds(x, next);
      if (testing::Test::HasFailure()) FAIL() << n;
    }
    Limbs x, y, power(n);
    fibonacci.Find(&x, &y, n);
    CheckEnds(x, y);
    CheckEnds(x, x);
    CheckEnds(x, Limbs(1, 1));
    CheckEnds(x, Limbs());
    CheckEnds(Limbs(n, kLimbMax), Limbs(n - 1, kLimbMax));
    power[n - 1] = 1;
    CheckEnds(power, Limbs(n - 1, kLimbMax));
    CheckEnds(power, x);
    power[n - 1] = Limb{1} << (kLimbBits - 1);
    CheckEnds(power, Limbs(n, kLimbMax));
  }
}

// The common divisor is reached in any part of the sequence; multiples end it at once.
TEST(HalfGcdTest, SequencesWithLongCommonDivisorsEndAsThoseOfSingleSteps) {
  for (int i = 0; i < Cases(150); ++i) {
    const size_t n = 40 + Below(40), common = 1 + Below(static_cast<uint32_t>(n - 2));
    Mpz g, a, b;
    Import(g, RandomLimbs(common));
    Import(a, RandomLimbs(n - common));
    Import(b, i % 3 == 0 ? Limbs(1, 1) : RandomLimbs(n - common));
    mpz_mul(a, a, g);
    mpz_mul(b, b, g);
    CheckEnds(Export(a, n), Export(b, n));
    if (i % 5 == 0) CheckEnds(Export(a, n), Export(a, n));
  }
}

// The quirks of Gcd and Inverse on both sides of the least lengths, and far above.
TEST(HalfGcdTest, NumbersAroundTheLeastLengthsAgreeWithThePeer) {
  std::vector<size_t> lengths;
  if (kFewerCases == 1) lengths = {kHalfGcdLengths.gcd * 3, kHalfGcdLengths.cofactor * 4 + 1};
  for (const size_t least : {kHalfGcdLengths.gcd, kHalfGcdLengths.cofactor,
                             2 * kHalfGcdLengths.recursion, 3 * kHalfGcdLengths.recursion}) {
    for (size_t n = least - 1; n <= least + 1; ++n) lengths.push_back(n);
  }
  for (const size_t n : lengths) {
    const uint32_t bits = static_cast<uint32_t>(n * kLimbBits);
    BigInt a = RandomBigOf(bits - 1), m = RandomBigOf(bits), r;
    if (m.IsZero()) m = BigInt(7);
    Mpz x(a), y(m), z, g;
    mpz_gcd(g, x, y);
    ASSERT_EQ(Gcd(r, a, m), S_OK);
    ASSERT_EQ(Hex(r), Hex(g));
    ASSERT_EQ(Inverse(r, a, m), S_OK);
    // a * r = gcd modulo m, also without an inverse.
    Mpz t(r);
    mpz_mul(z, x, t);
    mpz_sub(z, z, g);
    mpz_mod(z, z, y);
    EXPECT_EQ(LimbsOf(z), 0u) << n;
    EXPECT_TRUE(IsAbove(y, t) || IsOne(y)) << n;
    if (!IsOne(g) || IsOne(y)) continue;
    mpz_invert(z, x, y);
    ASSERT_EQ(Hex(r), Hex(z)) << n;
  }
}

}  // namespace
}  // namespace mirolta
