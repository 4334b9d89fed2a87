// Long products and quotients of limbs and their scratch, around every change of algorithm.
#include "divide.h"

#include <gtest/gtest.h>

#include "limb_testing.h"
#include "multiply.h"

namespace mirolta {
namespace {

constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);

void CheckProduct(size_t m, size_t n, bool square) {
  const Limbs x = RandomLimbs(m);
  const Limbs y = square ? x : RandomLimbs(n);
  Limbs z(m + n + 1, kGuard);
  Limbs scratch(MultiplyScratch(m, n).Value() + 1, kGuard);
  MultiplyLimbs(z.data(), x.data(), m, square ? x.data() : y.data(), n, scratch.data());
  EXPECT_EQ(z.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  z.pop_back();
  Mpz px, py;
  Import(px, x);
  Import(py, y);
  mpz_mul(px, px, py);
  ASSERT_EQ(z, Export(px, m + n)) << m << " by " << n;
}

TEST(MultiplyLimbsTest, BalancedProductsAreRight) {
  for (size_t n = 1; n < 460; n += n < 300 ? 1 : 13) {
    CheckProduct(n, n, false);
    CheckProduct(n, n, true);
  }
  CheckProduct(1500, 1500, false);
  CheckProduct(1500, 1500, true);
}

TEST(MultiplyLimbsTest, UnbalancedProductsAreRight) {
  for (int i = 0; i < Cases(400); ++i) {
    const size_t m = 1 + Below(700);
    CheckProduct(m, 1 + Below(static_cast<uint32_t>(m)), false);
    CheckProduct(1 + Below(40), m, false);
  }
}

// Shapes from balanced to twice as long, around the least size of each algorithm.
TEST(MultiplyLimbsTest, EveryShapeUpToTwiceIsRight) {
  for (size_t n = 34; n < 90; n += n < 42 ? 1 : 7) {
    for (size_t m = n; m <= 2 * n + 1; ++m) CheckProduct(m, n, false);
  }
}

void CheckQuotient(const Limbs& a, const Limbs& d) {
  Mpz pa, pd, pq, pr;
  Import(pa, a);
  Import(pd, d);
  mpz_tdiv_qr(pq, pr, pa, pd);
  Limbs q(a.size() - d.size() + 2, kGuard), r(d.size() + 1, kGuard);
  ASSERT_TRUE(DivideLimbs(q.data(), r.data(), a.data(), a.size(), d.data(), d.size()));
  EXPECT_EQ(q.back(), kGuard);
  EXPECT_EQ(r.back(), kGuard);
  q.pop_back();
  r.pop_back();
  ASSERT_EQ(q, Export(pq, q.size())) << a.size() << " by " << d.size();
  ASSERT_EQ(r, Export(pr, r.size())) << a.size() << " by " << d.size();
}

TEST(DivideLimbsTest, RandomQuotientsAreRight) {
  for (int i = 0; i < Cases(1500); ++i) {
    const size_t n = 1 + Below(i % 10 == 0 ? 300 : 30);
    Limbs d = RandomLimbs(n);
    if (d.back() == 0) d.back() = 1;
    CheckQuotient(RandomLimbs(n + Below(i % 10 == 1 ? 400 : 40)), d);
  }
}

// Dividends next to a multiple of the divisor need the corrections of the estimates.
TEST(DivideLimbsTest, QuotientsNextToMultiplesAreRight) {
  for (int i = 0; i < Cases(1500); ++i) {
    const size_t n = 1 + Below(i % 10 == 0 ? 260 : 20);
    Limbs d = RandomLimbs(n);
    if (d.back() == 0) d.back() = kLimbMax;
    const size_t count = 1 + Below(i % 10 == 0 ? 260 : 20);
    Mpz pa, pd;
    Import(pd, d);
    Import(pa, RandomLimbs(count));
    mpz_mul(pa, pa, pd);
    if (i % 3 == 0) mpz_add(pa, pa, pd);
    if (mpz_sgn(static_cast<mpz_srcptr>(pa)) != 0) mpz_sub_ui(pa, pa, Below(2));
    CheckQuotient(Export(pa, n + count + 1), d);
  }
}

TEST(DivideLimbsTest, QuotientsByOneLimbAreRight) {
  for (int i = 0; i < Cases(2000); ++i) {
    const Limbs a = RandomLimbs(Below(12));
    Limb d = RandomLimbs(1)[0];
    if (i % 2 == 0) d >>= Below(kLimbBits);
    if (d == 0) d = 1;
    Mpz pa, pd, pq, pr;
    Import(pa, a);
    Import(pd, Limbs{d});
    mpz_tdiv_qr(pq, pr, pa, pd);
    Limbs q(a.size());
    const LimbDivisor divisor = PrepareDivisor(d);
    EXPECT_EQ(DivideByLimb(q.data(), a.data(), a.size(), divisor), Export(pr, 1)[0]);
    EXPECT_EQ(q, Export(pq, a.size()));
    EXPECT_EQ(ModLimb(a.data(), a.size(), divisor), Export(pr, 1)[0]);
  }
}

TEST(DivideRepeatedlyTest, GivesWhatAsManyDivisionsGive) {
  for (size_t n = 0; n < 20; ++n) {
    for (int i = 0; i < Cases(60); ++i) {
      Limbs a = RandomLimbs(n);
      Limb d = RandomLimbs(1)[0];
      if (i % 3 == 0) d |= Limb{1} << (kLimbBits - 1);
      if (i % 7 == 0) d = 1;
      if (d == 0) continue;
      Mpz quotient, divisor, remainder;
      Import(quotient, a);
      Import(divisor, Limbs{d});
      Limb remainders[kRepeatedDivisions];
      DivideRepeatedly(remainders, a.data(), n, PrepareDivisor(d));
      for (const Limb got : remainders) {
        mpz_fdiv_qr(quotient, remainder, quotient, divisor);
        ASSERT_EQ(Limbs{got}, Export(remainder, 1)) << n;
      }
      ASSERT_EQ(a, Export(quotient, n)) << n;
    }
  }
}

TEST(DivideInPlaceTest, EverySmallShapeIsRight) {
  for (size_t n = 1; n < 60; n += 1 + Below(3)) {
    for (size_t m = n; m < n + 60; m += 1 + Below(9)) {
      Limbs u = RandomLimbs(m), v = RandomLimbs(n);
      if (v[n - 1] == 0) v[n - 1] = 1 + Below(5);
      Mpz pu, pv, quotient, remainder;
      Import(pu, u);
      Import(pv, v);
      mpz_fdiv_qr(quotient, remainder, pu, pv);
      Limbs q(m - n + 2, kGuard), scratch(DivideScratch(m, n).Value() + 1, kGuard);
      u.push_back(kGuard);
      DivideInPlace(q.data(), u.data(), m, v.data(), n, scratch.data());
      ASSERT_EQ(q.back(), kGuard);
      ASSERT_EQ(scratch.back(), kGuard);
      q.pop_back();
      ASSERT_EQ(q, Export(quotient, m - n + 1)) << m << " by " << n;
      u.resize(n);
      ASSERT_EQ(u, Export(remainder, n)) << m << " by " << n;
    }
  }
}

// Whether the quotient was determined; if so, it must be right.
bool IsDetermined(const Limbs& a, const Limbs& d) {
  const size_t m = a.size(), n = d.size();
  Limbs u = a, v = d, q(m - n + 2, kGuard), scratch(DivideScratch(m, n).Value() + 1, kGuard);
  u.push_back(kGuard);
  u.push_back(kGuard);
  const bool determined = QuotientInPlace(q.data(), u.data(), m, v.data(), n, scratch.data());
  EXPECT_EQ(u.back(), kGuard);
  EXPECT_EQ(q.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  if (!determined) return false;
  Mpz pa, pd;
  Import(pa, a);
  Import(pd, d);
  mpz_tdiv_q(pa, pa, pd);
  q.pop_back();
  EXPECT_EQ(q, Export(pa, q.size())) << m << " by " << n;
  return true;
}

// Limbs without the edges of RandomLimbs.
Limbs PlainLimbs(size_t n) {
  Limbs limbs(n);
  for (Limb& limb : limbs) {
    for (uint32_t bits = 0; bits < kLimbBits; bits += 32) {
      limb |= static_cast<Limb>(static_cast<uint32_t>(Generator()())) << bits;
    }
  }
  return limbs;
}

// Sizes around the changes of method, with quotients shorter than, as long as and longer than the
// divisor.
TEST(QuotientInPlaceTest, ReportsWhatIsNoMultiple) {
  for (int i = 0; i < Cases(2000); ++i) {
    const size_t most = i % 5 == 0 ? 300 : 40;
    const size_t n = 1 + Below(static_cast<uint32_t>(most));
    Limbs d = PlainLimbs(n);
    if (i % 2 == 0) d.back() >>= Below(kLimbBits);
    d.back() |= 2;
    const Limbs a = PlainLimbs(n + Below(static_cast<uint32_t>(most)));
    ASSERT_TRUE(IsDetermined(a, d)) << a.size() << " by " << n;
  }
}

TEST(QuotientInPlaceTest, IsRightOrUndeterminedAtEdges) {
  int determined = 0;
  for (int i = 0; i < Cases(3000); ++i) {
    const uint32_t most = i % 5 == 0 ? 300 : 24;
    Limbs d = RandomLimbs(1 + Below(most));
    if (d.back() == 0) d.back() = i % 2 == 0 ? kLimbMax : 1;
    if (IsDetermined(RandomLimbs(d.size() + Below(most)), d)) ++determined;
  }
  EXPECT_GT(determined, 0);
}

// Multiples, whose quotients the leading limbs do not determine: they are divided in full.
TEST(DivideLimbsTest, ExactQuotientsAreRight) {
  for (size_t n = 1; n <= 40; ++n) {
    const size_t count = 1 + Below(40);
    Limbs d = RandomLimbs(n);
    d.back() |= 1;
    Limbs factor = RandomLimbs(count);
    factor.back() |= 1;
    Mpz pa, pd, pf;
    Import(pd, d);
    Import(pf, factor);
    mpz_mul(pa, pd, pf);
    const Limbs multiple = Export(pa, n + count);
    Limbs quotient(count + 1, kLimbMax);
    ASSERT_TRUE(DivideLimbs(quotient.data(), nullptr, multiple.data(), n + count, d.data(), n));
    factor.push_back(0);
    EXPECT_EQ(quotient, factor) << n + count << " by " << n;
  }
}

// A quotient that ends in zero limbs, or one less: the partial remainder is zero or almost the
// divisor, and the omitted limbs decide.
TEST(QuotientInPlaceTest, IsRightOrUndeterminedNextToMultiples) {
  for (int i = 0; i < Cases(3000); ++i) {
    const uint32_t most = i % 5 == 0 ? 200 : 12;
    const size_t n = 3 + Below(most);
    const size_t count = 1 + Below(most);
    Limbs d = i % 3 == 0 ? PlainLimbs(n) : RandomLimbs(n);
    d.back() |= Limb{1} << Below(kLimbBits);
    Limbs factor = i % 3 == 0 ? PlainLimbs(count) : RandomLimbs(count);
    factor.back() |= 1;
    for (size_t zeros = Below(static_cast<uint32_t>(count)); zeros != 0; --zeros) {
      factor[zeros - 1] = 0;
    }
    Mpz pa, pd, pf;
    Import(pd, d);
    Import(pf, factor);
    mpz_mul(pa, pd, pf);
    const Limbs multiple = Export(pa, n + count);
    // Nothing of d is left out for a quotient of one limb.
    EXPECT_FALSE(IsDetermined(multiple, d) && count > 1) << n + count << " by " << n;
    mpz_sub_ui(pf, pa, 1);
    IsDetermined(Export(pf, n + count), d);
    mpz_add_ui(pf, pa, 1);
    IsDetermined(Export(pf, n + count), d);
    mpz_add(pf, pa, pd);
    mpz_sub_ui(pf, pf, 1 + Below(2));
    IsDetermined(Export(pf, n + count), d);
    // Remainders about as large as the parts left out.
    mpz_set_ui(pf, 1 + Below(static_cast<uint32_t>(count) + 2));
    mpz_mul_2exp(pf, pf, (n - 1) * kLimbBits);
    mpz_add(pf, pa, pf);
    IsDetermined(Export(pf, n + count), d);
  }
}

}  // namespace
}  // namespace mirolta
