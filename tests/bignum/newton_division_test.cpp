// Division by reciprocals: against the peer, for shapes around each change of the blocks.
#include "newton_division.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "limb_testing.h"

namespace mirolta {
namespace {

constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);

// Limbs whose top bit is set, often the extremes of a divisor.
Limbs Divisor(size_t n) {
  Limbs d = RandomLimbs(n);
  const uint32_t kind = Below(4);
  if (kind == 0) std::fill(d.begin(), d.end(), kLimbMax);
  if (kind == 1) std::fill(d.begin(), d.end(), Limb{0});
  if (kind == 2) std::fill_n(d.rbegin(), n / 2, kLimbMax);
  d.back() |= Limb{1} << (kLimbBits - 1);
  return d;
}

// A dividend whose top d.size() limbs are below d, often by 1.
Limbs Dividend(const Limbs& d, size_t count) {
  Limbs a = RandomLimbs(count);
  Limbs top = RandomLimbs(d.size());
  if (Below(3) == 0) {
    top = d;
    top[0] = static_cast<Limb>(top[0] - 1);
    for (size_t i = 1; i < d.size() && top[i - 1] == kLimbMax; ++i)
      top[i] = static_cast<Limb>(top[i] - 1);
  } else {
    top.back() &= d.back() >> 1;
  }
  a.insert(a.end(), top.begin(), top.end());
  return a;
}

TEST(NewtonDivisionTest, ReciprocalsAreAtMostThreeTooSmall) {
  for (size_t n = 2; n < 1700; n += n < 20 || (n > 195 && n < 210) ? 1 : 1 + Below(97)) {
    const Limbs d = Divisor(n);
    Limbs z(n + 2, kGuard), scratch(NewtonReciprocalScratch(n).Value() + 1, kGuard);
    NewtonReciprocal(z.data(), d.data(), n, scratch.data());
    ASSERT_EQ(z.back(), kGuard);
    ASSERT_EQ(scratch.back(), kGuard);
    z.pop_back();
    Limbs power(2 * n + 1);
    power.back() = 1;
    Mpz difference, pd, pz;
    Import(difference, power);
    Import(pd, d);
    Import(pz, z);
    mpz_fdiv_qr(difference, pd, difference, pd);
    mpz_sub(difference, difference, pz);
    ASSERT_GE(mpz_cmp(difference, Mpz()), 0) << n;
    ASSERT_LE(mpz_cmp(difference, Mpz(3)), 0) << n;
  }
}

// Checks both divisions; returns whether the quotient alone was determined.
bool CheckDivision(const Limbs& a, const Limbs& d) {
  const size_t n = d.size(), count = a.size() - n;
  Mpz quotient, remainder, pa, pd;
  Import(pa, a);
  Import(pd, d);
  mpz_fdiv_qr(quotient, remainder, pa, pd);
  const Limbs expected = Export(quotient, count);
  Limbs q(count + 1, kGuard), scratch(NewtonScratch(n, count).Value() + 1, kGuard), u = a;
  u.push_back(kGuard);
  NewtonDivide(q.data(), u.data(), d.data(), n, count, scratch.data());
  EXPECT_EQ(q.back(), kGuard);
  EXPECT_EQ(u.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  EXPECT_EQ(Limbs(q.begin(), q.end() - 1), expected) << count << " by " << n;
  u.resize(n);
  EXPECT_EQ(u, Export(remainder, n)) << count << " by " << n;
  u = a;
  u.push_back(kGuard);
  const bool determined = NewtonQuotient(q.data(), u.data(), d.data(), n, count, scratch.data());
  EXPECT_EQ(q.back(), kGuard);
  EXPECT_EQ(u.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  if (determined) {
    EXPECT_EQ(Limbs(q.begin(), q.end() - 1), expected) << count << " by " << n;
  }
  return determined;
}

TEST(NewtonDivisionTest, QuotientsAndRemaindersAreRight) {
  int determined = 0, all = 0;
  for (int i = 0; i < Cases(1500); ++i) {
    const uint32_t most = i % 20 == 0 ? 700 : 60;
    const Limbs d = Divisor(2 + Below(most));
    determined += CheckDivision(Dividend(d, 2 + Below(3 * most)), d);
    if (testing::Test::HasFailure()) FAIL() << i;
    ++all;
  }
  EXPECT_GT(determined, all / 2);
}

// Each multiple, the dividend before and the one behind: only exact quotients are right.
TEST(NewtonDivisionTest, QuotientsNextToMultiplesAreRightOrUndetermined) {
  for (int i = 0; i < Cases(300); ++i) {
    const Limbs d = Divisor(2 + Below(80));
    const size_t count = 2 + Below(160);
    Limbs factor = RandomLimbs(count);
    factor.back() >>= 1;
    Mpz multiple, pf;
    Import(multiple, d);
    Import(pf, factor);
    mpz_mul(multiple, multiple, pf);
    EXPECT_FALSE(CheckDivision(Export(multiple, d.size() + count), d));
    mpz_add_ui(multiple, multiple, 1);
    CheckDivision(Export(multiple, d.size() + count), d);
    mpz_sub(multiple, multiple, Mpz(2));
    if (mpz_cmp(multiple, Mpz()) >= 0) CheckDivision(Export(multiple, d.size() + count), d);
    if (testing::Test::HasFailure()) FAIL() << i;
  }
}

// What divisions within a greatest common divisor have: the scratch that LehmerGcd reserves.
TEST(NewtonDivisionTest, ScratchOfDivisionsIsBoundedByTheLengths) {
  const size_t least = CurrentTransformKernels().least;
  for (size_t size = 2 * least; size < (size_t{1} << 22); size += 1 + size / 5) {
    const size_t half = (size + 1) / 2 + 2;
    const size_t room = 2 * size + 2 + MultiplyScratch(half, half).Value();
    for (size_t n = least; n + least <= size; n += 1 + n / 3) {
      EXPECT_LE(NewtonScratch(n, size - n).Value(), room) << size - n << " by " << n;
    }
  }
}

}  // namespace
}  // namespace mirolta
