// Products and powers modulo numbers of four limbs, against the peer and the portable method.
#include <gtest/gtest.h>

#include "four_limb_power.h"
#include "four_limbs_x86_64.h"
#include "limb_testing.h"
#include "montgomery.h"
#include "montgomery_power.h"
#include "power_kernels.h"

namespace mirolta {
namespace {

#if MIROLTA_KERNELS_FOR(X86_64)

constexpr uint32_t kBits = 4 * kLimbBits;

class FourLimbsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if ((kFeatureBmi2Adx & ~ProcessorFeatures()) != 0) GTEST_SKIP() << "mulx and adx not here";
  }
};

// An odd modulus of `bits` bits, with the largest top limb that products take for every fifth.
void RandomModulus(Mpz& m, uint32_t bits, int i) {
  const Mpz random(RandomBigOf(bits));
  mpz_set(m, random);
  mpz_setbit(m, bits - 1);
  if (i % 5 == 0) {
    Limbs limbs(4, i % 2 == 0 ? kLimbMax : 1);
    limbs[3] = kFourLimbsMostTop;
    Import(m, limbs);
  }
  mpz_setbit(m, 0);
  if (bits == kBits) {
    Limbs limbs = Export(m, 4);
    if (limbs[3] > kFourLimbsMostTop) limbs[3] = kFourLimbsMostTop;
    Import(m, limbs);
  }
}

// A residue; every third is next to 0 or m, and every fourth has low limbs of ones.
void RandomResidue(Mpz& x, const Mpz& m, int i) {
  const Mpz random(RandomBigOf(kBits));
  mpz_mod(x, random, m);
  if (i % 4 == 1) {
    Limbs limbs = Export(x, 4);
    limbs[0] = limbs[1] = limbs[2] = kLimbMax;
    Import(x, limbs);
    mpz_mod(x, x, m);
  }
  if (i % 3 == 1) mpz_sub_ui(x, m, 1 + Below(2));
  if (i % 9 == 2) mpz_set_ui(x, Below(2));
}

TEST_F(FourLimbsTest, ProductsAgreeWithThePeer) {
  for (int i = 0; i < Cases(4000); ++i) {
    Mpz m, x, y, base, inverse, wanted;
    RandomModulus(m, i % 2 == 0 ? kBits : kBits - Below(kLimbBits), i);
    RandomResidue(x, m, i);
    RandomResidue(y, m, i / 3);
    mpz_setbit(base, kBits);
    mpz_invert(inverse, base, m);
    const size_t squares = i % 4 == 0 ? Below(5) : 0;
    Limbs a = Export(x, 4), b = Export(y, 4), z(4, 7);
    const Limbs limbs = Export(m, 4);
    const FourLimbModulus modulus =
        PrepareFourLimbs(limbs.data(), PrepareMontgomery(limbs.data(), 4).inverse);
    FourLimbProduct(z.data(), a.data(), b.data(), modulus, squares);
    mpz_set(wanted, x);
    for (size_t k = 0; k <= squares; ++k) {
      if (k == squares) {
        mpz_mul(wanted, wanted, y);
      } else {
        mpz_mul(wanted, wanted, wanted);
      }
      mpz_mul(wanted, wanted, inverse);
      mpz_mod(wanted, wanted, m);
    }
    ASSERT_EQ(z, Export(wanted, 4)) << i;
    // Over an operand.
    Limbs other = b;
    FourLimbProduct(a.data(), a.data(), b.data(), modulus, squares);
    ASSERT_EQ(a, z) << i;
    a = Export(x, 4);
    FourLimbProduct(other.data(), a.data(), other.data(), modulus, squares);
    ASSERT_EQ(other, z) << i;
  }
}

TEST_F(FourLimbsTest, PowersAgreeWithThePeer) {
  for (int i = 0; i < Cases(400); ++i) {
    Mpz m, x, power;
    RandomModulus(m, kBits - (i % 2 == 0 ? 0 : Below(kLimbBits)), i);
    // Above what the products take.
    if (i % 7 == 0) {
      Limbs top(4, kLimbMax);
      Import(m, top);
    }
    RandomResidue(x, m, i);
    const uint32_t exponent_bits = i % 3 == 0 ? 1 + Below(12) : 1 + Below(300);
    Mpz exponent(RandomBigOf(exponent_bits));
    mpz_setbit(exponent, exponent_bits - 1);
    const Limbs e = Export(exponent, (exponent_bits + kLimbBits - 1) / kLimbBits);
    const Limbs limbs = Export(m, 4), base = Export(x, 4);
    Limbs z(4, 7);
    ASSERT_TRUE(FourLimbPower(z.data(), base.data(), e.data(), e.size(), limbs.data(), 4));
    mpz_powm(power, x, exponent, m);
    ASSERT_EQ(z, Export(power, 4)) << i;
  }
}

TEST_F(FourLimbsTest, TheKernelTakesItsSizesOnly) {
  const uint32_t all = ~0u;
  EXPECT_EQ(ChoosePower(kFourLimbPowerLeastBits, all).function, FourLimbPower);
  EXPECT_EQ(ChoosePower(kFourLimbPowerMostBits, all).function, FourLimbPower);
  EXPECT_EQ(ChoosePower(kFourLimbPowerLeastBits - 1, all).function, MontgomeryPower);
  EXPECT_EQ(ChoosePower(kFourLimbPowerMostBits + 1, all).function, MontgomeryPower);
  EXPECT_EQ(ChoosePower(256, all & ~kFeatureBmi2Adx).function, MontgomeryPower);
}

#endif

}  // namespace
}  // namespace mirolta
