// Every limb kernel against the peer.
#include "limb_kernels.h"

#include <gtest/gtest.h>

#include "kernel_rows.h"
#include "limb_testing.h"

namespace mirolta {
namespace {

// z modulo B^n, as limbs.
Limbs LowLimbs(const Mpz& z, size_t n) {
  Mpz low;
  mpz_fdiv_r_2exp(low, z, n * kLimbBits);
  return Export(low, n);
}

TEST(LimbKernelListTest, KernelsNeedTheInstructionsThatTheyUse) {
  test::ExpectNeeds(kLimbKernels, {{"mulx-adx", kFeatureBmi2Adx},
                                   {"mulx-avx2", kFeatureBmi2Adx | kFeatureAvx2},
                                   {"mulx", kFeatureBmi2Adx},
                                   {"mul-sse2", kFeatureSse2},
                                   {"mul", 0},
                                   {"arm", 0},
                                   {"umulh", 0},
                                   {"wide products", 0},
                                   {"half products", 0}});
}

class LimbKernelsTest : public ::testing::TestWithParam<Kernel<const LimbKernels*>> {
 protected:
  void SetUp() override {
    if (!test::Runs(GetParam().needs)) GTEST_SKIP() << "the processor lacks it";
  }

  // The row of limbs z + sign * x * y against the peer; the limb above is compared too.
  void CheckRow(Limb (*row)(Limb*, const Limb*, size_t, Limb), int sign, bool adds) {
    for (size_t n = 0; n < 40; ++n) {
      for (int i = 0; i < Cases(20); ++i) {
        Limbs z = RandomLimbs(n);
        const Limbs x = RandomLimbs(n);
        const Limb y = RandomLimbs(1)[0];
        Mpz pz, px, py;
        Import(pz, adds ? z : Limbs(n));
        Import(px, x);
        Import(py, Limbs{y});
        mpz_mul(px, px, py);
        if (sign > 0) mpz_add(pz, pz, px);
        if (sign < 0) mpz_sub(pz, pz, px);
        Limbs wanted = LowLimbs(pz, n + 1);
        const Limb above = sign > 0 ? wanted[n] : static_cast<Limb>(0 - wanted[n]);
        wanted.resize(n);
        EXPECT_EQ(row(z.data(), x.data(), n, y), above) << n;
        EXPECT_EQ(z, wanted) << n;
      }
    }
  }

  // x * y, and x * x.
  void CheckProduct(const Limbs& x, const Limbs& y) {
    const size_t m = x.size(), n = y.size();
    Mpz px, py;
    Import(px, x);
    Import(py, y);
    mpz_mul(py, px, py);
    Limbs z(m + n, 77);
    kernels_->multiply(z.data(), x.data(), m, y.data(), n);
    EXPECT_EQ(z, LowLimbs(py, m + n)) << m << " by " << n;
    mpz_mul(px, px, px);
    Limbs square(2 * m, 77);
    kernels_->square(square.data(), x.data(), m);
    EXPECT_EQ(square, LowLimbs(px, 2 * m)) << m;
  }

  const LimbKernels* const kernels_ = GetParam().function;
};

TEST_P(LimbKernelsTest, SumsAndDifferencesAreRight) {
  for (size_t n = 0; n < 40; ++n) {
    for (int i = 0; i < Cases(20); ++i) {
      const Limbs x = RandomLimbs(n), y = RandomLimbs(n);
      Mpz px, py, sum, difference;
      Import(px, x);
      Import(py, y);
      mpz_add(sum, px, py);
      mpz_sub(difference, px, py);
      Limbs z(n);
      EXPECT_EQ(kernels_->add(z.data(), x.data(), y.data(), n), LowLimbs(sum, n + 1)[n]);
      EXPECT_EQ(z, LowLimbs(sum, n));
      Limbs in_place = x;
      kernels_->add(in_place.data(), in_place.data(), y.data(), n);
      EXPECT_EQ(in_place, z);
      EXPECT_EQ(kernels_->subtract(z.data(), x.data(), y.data(), n),
                mpz_sgn(static_cast<mpz_srcptr>(difference)) < 0 ? 1u : 0u);
      EXPECT_EQ(z, LowLimbs(difference, n));
      in_place = y;
      kernels_->subtract(in_place.data(), x.data(), in_place.data(), n);
      EXPECT_EQ(in_place, z);
    }
  }
}

TEST_P(LimbKernelsTest, ProductsByOneLimbAreRight) {
  CheckRow(kernels_->mul1, 1, false);
}
TEST_P(LimbKernelsTest, SumsWithProductsByOneLimbAreRight) {
  CheckRow(kernels_->mul_add1, 1, true);
}
TEST_P(LimbKernelsTest, DifferencesWithProductsByOneLimbAreRight) {
  CheckRow(kernels_->mul_sub1, -1, true);
}

TEST_P(LimbKernelsTest, ProductsAndSquaresAreRight) {
  for (size_t m = 1; m < 36; ++m) {
    for (size_t n = 1; n <= m; ++n) {
      for (int i = 0; i < Cases(1); ++i) CheckProduct(RandomLimbs(m), RandomLimbs(n));
    }
  }
}

// Where tables take vectors, cut operands into parts, and sum the most products.
TEST_P(LimbKernelsTest, LongProductsAndSquaresAreRight) {
  for (const size_t n : {9u, 10u, 20u, 36u, 55u, 56u, 57u, 99u, 104u, 105u, 106u}) {
    for (const size_t more : {0u, 1u, 6u, 7u, 8u, 50u, 105u, 210u, 211u}) {
      const size_t m = n + more;
      CheckProduct(RandomLimbs(m), RandomLimbs(n));
      CheckProduct(Limbs(m, kLimbMax), Limbs(n, kLimbMax));
    }
  }
}

TEST_P(LimbKernelsTest, MontgomeryReductionsAreRight) {
  for (size_t n = 1; n < 36; ++n) {
    for (int i = 0; i < Cases(20); ++i) {
      Limbs m = RandomLimbs(n);
      m[0] |= 1;
      if (i % 2 == 0) m[n - 1] |= Limb{1} << (kLimbBits - 1);
      // Any t below m * B^n; near its end too.
      Mpz pm, pt, base;
      Import(pm, m);
      mpz_mul_2exp(base, pm, n * kLimbBits);
      if (i % 3 == 0) {
        mpz_sub_ui(pt, base, 1 + Below(3));
      } else {
        Import(pt, RandomLimbs(2 * n));
        mpz_mod(pt, pt, base);
      }
      Limbs t = LowLimbs(pt, 2 * n);
      mpz_set_ui(base, 1);
      mpz_mul_2exp(base, base, n * kLimbBits);
      if (mpz_cmp_ui(static_cast<mpz_srcptr>(pm), 1) == 0) continue;
      ASSERT_NE(mpz_invert(base, base, pm), 0);
      mpz_mul(pt, pt, base);
      mpz_mod(pt, pt, pm);
      Limbs z(n);
      kernels_->reduce(z.data(), t.data(), m.data(), n, NegatedInverse(m[0]));
      EXPECT_EQ(z, LowLimbs(pt, n));
    }
  }
}

TEST_P(LimbKernelsTest, MontgomeryProductsAreRight) {
  int taken = 0;
  for (size_t n = 1; n < 36; ++n) {
    for (int i = 0; i < Cases(200); ++i) {
      Limbs m = RandomLimbs(n);
      m[0] |= 1;
      if (i % 2 == 0) m[n - 1] |= Limb{1} << (kLimbBits - 1);
      if (i % 8 == 0) m.assign(n, kLimbMax);
      Mpz pm, px, py, inverse, modulus;
      Import(pm, m);
      if (mpz_cmp_ui(static_cast<mpz_srcptr>(pm), 1) == 0) continue;
      Import(px, RandomLimbs(n));
      Import(py, RandomLimbs(n));
      if (i % 3 == 0) mpz_sub_ui(px, pm, 1);
      if (i % 9 == 0) mpz_sub_ui(py, pm, 1 + Below(2));
      mpz_mod(px, px, pm);
      mpz_mod(py, py, pm);
      const Limbs x = LowLimbs(px, n), y = LowLimbs(py, n);
      Limbs z(n, 7);
      const Limb negated = NegatedInverse(m[0]);
      if (!kernels_->montgomery(z.data(), x.data(), y.data(), m.data(), n, negated)) {
        ASSERT_EQ(z, Limbs(n, 7));
        break;
      }
      ++taken;
      mpz_set_ui(modulus, 1);
      mpz_mul_2exp(modulus, modulus, n * kLimbBits);
      mpz_invert(inverse, modulus, pm);
      mpz_mul(px, px, py);
      mpz_mul(px, px, inverse);
      mpz_mod(px, px, pm);
      ASSERT_EQ(z, LowLimbs(px, n)) << n;
      Limbs in_place = x;
      kernels_->montgomery(in_place.data(), in_place.data(), y.data(), m.data(), n, negated);
      ASSERT_EQ(in_place, z);
    }
  }
  RecordProperty("taken", taken);
}

INSTANTIATE_TEST_SUITE_P(Tables, LimbKernelsTest,
                         ::testing::ValuesIn(kLimbKernels.begin(), kLimbKernels.end()),
                         [](const auto& row) { return test::TestNameOf(row.param); });

TEST(LimbKernelListTest, EndsInAKernelThatNeedsNothing) {
  ASSERT_GE(kLimbKernels.size(), 2u);
  EXPECT_EQ(kLimbKernels[kLimbKernels.size() - 1].needs, 0u);
  EXPECT_NE(&CurrentLimbKernels(), nullptr);
}

}  // namespace
}  // namespace mirolta
