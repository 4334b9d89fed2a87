// Products and powers in radix 2^52, and batched Fermat tests, against the peer and the portable
// kernels.
#include "radix52.h"

#include <gtest/gtest.h>

#include "fermat_batch.h"
#include "fermat_ifma.h"
#include "limb_testing.h"
#include "montgomery_power.h"
#include "power_kernels.h"
#include "radix52_power.h"

namespace mirolta {
namespace {

// A number of exactly that many bits, odd, with runs of ones and zeros; all ones for every ninth.
void RandomModulus(Mpz& m, uint32_t bits, int i) {
  const Mpz random(RandomBigOf(bits));
  mpz_set(m, random);
  mpz_setbit(m, bits - 1);
  mpz_setbit(m, 0);
  if (i % 9 != 0) return;
  mpz_set_ui(m, 1);
  mpz_mul_2exp(m, m, bits);
  mpz_sub_ui(m, m, 1);
}

TEST(FermatBatchTest, EachNumberIsTestedToItsOwnBase) {
  int taken = 0;
  for (uint32_t bits = 100; bits < 1300; bits += 1 + Below(12 * kFewerCases)) {
    const FermatBatch batch(bits);
    if (batch.Capacity() == 0) continue;
    ASSERT_EQ(batch.Capacity(), FermatBatch::kMost);
    const size_t n = (bits + kLimbBits - 1) / kLimbBits + Below(2);
    const size_t count = 1 + Below(static_cast<uint32_t>(batch.Capacity()));
    const bool only_two = Below(2) == 0;
    Limbs candidates, bases;
    uint32_t wanted = 0;
    for (size_t i = 0; i < count; ++i) {
      Mpz m, e, power;
      const uint32_t size = Below(4) == 0 ? bits - Below(64) : bits;
      RandomModulus(m, size, static_cast<int>(Below(9)));
      if (Below(2) == 0) mpz_nextprime(m, m);
      if (mpz_sizeinbase(m, 2) > bits) RandomModulus(m, bits, 1);
      const Limb base = only_two ? 2 : Limb{2} + Below(6);
      mpz_sub_ui(e, m, 1);
      const Mpz a(static_cast<unsigned long>(base));
      mpz_powm(power, a, e, m);
      if (mpz_cmp_ui(static_cast<mpz_srcptr>(power), 1) == 0) wanted |= 1u << i;
      const Limbs limbs = Export(m, n);
      candidates.insert(candidates.end(), limbs.begin(), limbs.end());
      bases.push_back(base);
    }
    uint32_t passed = ~0u;
    ASSERT_TRUE(batch.Test(&passed, candidates.data(), bases.data(), count, n));
    ASSERT_EQ(passed, wanted) << bits;
    ++taken;
  }
  RecordProperty("taken", taken);
  // Other processors have none of these kernels.
  EXPECT_EQ(taken != 0, FermatBatch(1024).Capacity() != 0);
}

#if MIROLTA_KERNELS_FOR(X86)

using Digits = std::vector<Digit52>;

// The limbs of a digit.
constexpr size_t kLowLimbs = 64 / kLimbBits;

// z := z * 2^52 + digit.
void AppendDigit(Mpz& z, Digit52 digit) {
  constexpr uint32_t kHalf = kRadix52Bits / 2;
  mpz_mul_2exp(z, z, kHalf);
  mpz_add_ui(z, z, static_cast<unsigned long>(digit >> kHalf));
  mpz_mul_2exp(z, z, kHalf);
  mpz_add_ui(z, z, static_cast<unsigned long>(digit & ((Digit52{1} << kHalf) - 1)));
}

class Radix52Test : public ::testing::Test {
 protected:
  void SetUp() override {
    if ((kRadix52Features & ~ProcessorFeatures()) != 0) GTEST_SKIP() << "ifma not here";
  }
};

TEST_F(Radix52Test, SplitAndJoinedNumbersAreTheSame) {
  for (int i = 0; i < Cases(500); ++i) {
    const BigInt n = RandomBig(2000);
    const Mpz z(n);
    const size_t limbs = n.Used() / kLimbWords + 1;
    const Limbs x = Export(z, limbs);
    const size_t count = Radix52Count(limbs * kLimbBits, Below(60));
    Digits digits(count);
    Limbs joined(limbs, 5);
    ToRadix52(digits.data(), count, x.data(), limbs);
    Mpz sum;
    for (size_t j = count; j-- != 0;) {
      ASSERT_LE(digits[j], kRadix52Mask);
      AppendDigit(sum, digits[j]);
    }
    ASSERT_EQ(mpz_cmp(sum, z), 0);
    FromRadix52(joined.data(), limbs, digits.data(), count);
    ASSERT_EQ(joined, x);
  }
}

// A modulus with the digits that the products read.
struct DigitModulus {
  Digits digits;
  Limbs limbs, spare;
  Radix52Modulus modulus;

  DigitModulus(const Mpz& m, size_t padded)
      : digits(kRadix52ModulusNumbers * padded, 5),
        limbs(Export(m, padded * kLowLimbs)),
        spare(limbs.size() + kRadix52DigitLimbs),
        modulus(ToRadix52Modulus(digits.data(), padded, limbs.data(), limbs.size(), spare.data())) {
  }
};

Digits ExportDigits(const Mpz& x, size_t padded) {
  Digits digits(padded);
  const Limbs limbs = Export(x, padded * kLowLimbs);
  ToRadix52(digits.data(), padded, limbs.data(), limbs.size());
  return digits;
}

void ImportDigits(Mpz& x, const Digits& digits) {
  Limbs limbs(digits.size() * kLowLimbs);
  FromRadix52(limbs.data(), limbs.size(), digits.data(), digits.size());
  Import(x, limbs);
}

TEST_F(Radix52Test, ModuliHaveTheirMultiple) {
  for (uint32_t bits = 40; bits < 700; bits += 1 + Below(9)) {
    Mpz m, product, base;
    RandomModulus(m, bits, static_cast<int>(bits));
    const size_t padded = (bits / kRadix52Bits / kRadix52PerVector + 1) * kRadix52PerVector;
    const DigitModulus of(m, padded);
    EXPECT_EQ(Digits(of.digits.begin(), of.digits.begin() + static_cast<std::ptrdiff_t>(padded)),
              ExportDigits(m, padded));
    // multiple * base = m * i + 1 for some i, so that multiple <= m is the only one.
    for (size_t k = 0; k < kRadix52Multiples; ++k) {
      Mpz multiple, rest;
      const Digit52* const digits = of.modulus.multiple[k];
      ImportDigits(multiple, Digits(digits, digits + padded));
      EXPECT_LE(mpz_cmp(multiple, m), 0);
      mpz_mul_2exp(product, multiple, (k + 1) * kRadix52Bits);
      mpz_sub_ui(product, product, 1);
      mpz_mod(rest, product, m);
      ASSERT_EQ(mpz_sgn(static_cast<mpz_srcptr>(rest)), 0) << bits;
    }
    // m * inverse = -1.
    AppendDigit(base, of.modulus.inverse);
    mpz_mul(product, m, base);
    mpz_add_ui(product, product, 1);
    Mpz low;
    mpz_fdiv_r_2exp(low, product, kRadix52Bits);
    ASSERT_EQ(mpz_sgn(static_cast<mpz_srcptr>(low)), 0) << bits;
  }
}

// Numbers from m on are reduced, also those that are longer than m by a limb.
TEST_F(Radix52Test, NumbersBelowTwiceTheModulusAreReduced) {
  for (int i = 0; i < Cases(200); ++i) {
    const uint32_t bits = i % 2 == 0 ? 512 : 500 + Below(100);
    const size_t n = (bits + kLimbBits - 1) / kLimbBits;
    const size_t count = Radix52Count(bits, kRadix52Spare);
    Mpz m, x, twice, wanted;
    RandomModulus(m, bits, i);
    const Mpz random(RandomBigOf(bits + 1));
    mpz_mul_2exp(twice, m, 1);
    mpz_mod(x, random, twice);
    if (i % 5 == 0) mpz_set(x, m);
    if (i % 5 == 1) mpz_sub_ui(x, twice, 1);
    if (i % 5 == 2) mpz_sub_ui(x, m, 1);
    Limbs z(n, 7), spare(n + 1, 7);
    LeaveRadix52(z.data(), ExportDigits(x, count).data(), count, Export(m, n).data(), n,
                 spare.data());
    mpz_mod(wanted, x, m);
    ASSERT_EQ(z, Export(wanted, n)) << bits;
  }
}

// All counts of vectors that have a product of their own, and some of those that share one.
size_t NextVectors(size_t vectors) {
  return vectors < 12 ? vectors + 1 : vectors + 7;
}
static_assert((kRadix52MostVectors - 12) % 7 == 0);

TEST_F(Radix52Test, ProductsAgreeWithThePeer) {
  for (size_t vectors = 1; vectors <= kRadix52MostVectors; vectors = NextVectors(vectors)) {
    const size_t padded = vectors * kRadix52PerVector;
    for (int i = 0; i < Cases(vectors < 12 ? 300 : 40); ++i) {
      const size_t count = vectors == 1 ? 1 + Below(8) : padded - Below(8);
      const uint32_t most = static_cast<uint32_t>(count * kRadix52Bits - kRadix52Spare);
      Mpz m, x, y, base, inverse, product, got;
      RandomModulus(m, i % 2 == 0 ? most : most - Below(most < 60 ? 40 : 60), i);
      // Operands up to three times the modulus, and next to it; one last.
      Mpz bound;
      mpz_mul_ui(bound, m, 3);
      const Mpz a(RandomBigOf(most + 2)), b(RandomBigOf(most + 2));
      mpz_mod(x, a, bound);
      mpz_mod(y, b, bound);
      if (i % 3 == 0) mpz_sub_ui(x, bound, 1);
      if (i % 6 == 0) mpz_sub_ui(y, bound, 1 + Below(2));
      if (i % 7 == 0) mpz_set(y, x);
      if (i % 4 == 0) mpz_set_ui(y, 1);
      mpz_setbit(base, static_cast<mp_bitcnt_t>(count * kRadix52Bits));
      mpz_invert(inverse, base, m);
      mpz_mul(product, x, y);
      mpz_mul(product, product, inverse);
      mpz_mod(product, product, m);

      const DigitModulus of(m, padded);
      Digits xd = ExportDigits(x, padded), zd(padded, ~Digit52{0});
      const Digits yd = ExportDigits(y, padded);
      const Radix52Product multiply = Radix52ProductFor(vectors);
      multiply(zd.data(), xd.data(), yd.data(), of.modulus, count);
      for (size_t j = 0; j < padded; ++j) ASSERT_LE(zd[j], j < count ? kRadix52Mask : 0) << j;
      ImportDigits(got, zd);
      if (i % 4 == 0) mpz_mul_2exp(bound, m, 1);
      ASSERT_LT(mpz_cmp(got, bound), 0);
      mpz_mod(got, got, m);
      ASSERT_EQ(mpz_cmp(got, product), 0) << vectors << " " << count;
      multiply(xd.data(), xd.data(), yd.data(), of.modulus, count);
      ASSERT_EQ(xd, zd);
    }
  }
}

// Each product of a pair is the one of its own operands.
TEST_F(Radix52Test, PairsAreTwoProducts) {
  for (size_t vectors = 1; vectors <= kRadix52MostPairVectors; ++vectors) {
    const size_t padded = vectors * kRadix52PerVector;
    for (int i = 0; i < Cases(50); ++i) {
      const size_t count = vectors == 1 ? 1 + Below(8) : padded - Below(8);
      const uint32_t most = static_cast<uint32_t>(count * kRadix52Bits - kRadix52Spare);
      Digits x, y, wanted(2 * padded);
      Mpz m[2];
      for (int k = 0; k < 2; ++k) {
        RandomModulus(m[k], most - Below(40), i + k);
        for (Digits* digits : {&x, &y}) {
          Mpz reduced;
          const Mpz random(RandomBigOf(most));
          mpz_mod(reduced, random, m[k]);
          const Digits one = ExportDigits(reduced, padded);
          digits->insert(digits->end(), one.begin(), one.end());
        }
      }
      const DigitModulus first(m[0], padded), second(m[1], padded);
      const Radix52Modulus moduli[2] = {first.modulus, second.modulus};
      for (size_t k = 0; k < 2; ++k) {
        Radix52ProductFor(vectors)(wanted.data() + k * padded, x.data() + k * padded,
                                   y.data() + k * padded, moduli[k], count);
      }
      Digits z(2 * padded, ~Digit52{0});
      Radix52PairProductFor(vectors)(z.data(), x.data(), y.data(), moduli, count);
      ASSERT_EQ(z, wanted) << vectors << " " << count;
      Radix52PairProductFor(vectors)(y.data(), x.data(), y.data(), moduli, count);
      ASSERT_EQ(y, wanted) << vectors << " " << count;
    }
  }
}

// The same digits, not only the same residue: the squares take the same quotient digits. Every seventh number has
// ones in all its digits, and every seventh only in the last of each vector, which carries when it is doubled.
TEST_F(Radix52Test, SquaresAreProductsByACopy) {
  for (size_t vectors = 1; vectors <= kRadix52MostVectors; vectors = NextVectors(vectors)) {
    const size_t padded = vectors * kRadix52PerVector;
    const bool has_pair = vectors <= kRadix52MostPairVectors;
    for (int i = 0; i < Cases(vectors < 12 ? 100 : 20); ++i) {
      const size_t count = vectors == 1 ? 1 + Below(8) : padded - Below(8);
      const uint32_t most = static_cast<uint32_t>(count * kRadix52Bits - kRadix52Spare);
      Mpz m[2];
      Digits x;
      for (int k = 0; k < 2; ++k) {
        RandomModulus(m[k], most - Below(40), i + k);
        Mpz bound, reduced;
        mpz_mul_ui(bound, m[k], 3);
        const Mpz random(RandomBigOf(most + 2));
        mpz_mod(reduced, random, bound);
        Digits one = ExportDigits(reduced, padded);
        for (size_t j = 0; i % 7 < 2 && j + 1 < count; ++j) {
          const bool is_last = j % kRadix52PerVector + 1 == kRadix52PerVector;
          one[j] = i % 7 == 0 || is_last ? kRadix52Mask : 0;
        }
        if (i % 7 < 2) one[count - 1] = 0;
        x.insert(x.end(), one.begin(), one.end());
      }
      const DigitModulus first(m[0], padded), second(m[1], padded);
      const Radix52Modulus moduli[2] = {first.modulus, second.modulus};
      const Digits copy = x;
      Digits wanted(2 * padded), got(2 * padded);
      const Radix52Product multiply = Radix52ProductFor(vectors);
      for (size_t k = 0; k < 2; ++k) {
        const size_t at = k * padded;
        multiply(wanted.data() + at, x.data() + at, copy.data() + at, moduli[k], count);
        multiply(got.data() + at, x.data() + at, x.data() + at, moduli[k], count);
      }
      ASSERT_EQ(got, wanted) << vectors << " " << count;
      if (!has_pair) continue;
      const Radix52PairProduct pair = Radix52PairProductFor(vectors);
      pair(got.data(), x.data(), x.data(), moduli, count);
      ASSERT_EQ(got, wanted) << vectors << " " << count;
      pair(x.data(), x.data(), x.data(), moduli, count);
      ASSERT_EQ(x, wanted) << vectors << " " << count;
    }
  }
}

// Carries pass through digits of ones in all vectors: (m + k) * 2^(52 count) mod m is a power whose
// product with one ends in a long run of ones.
TEST_F(Radix52Test, CarriesPassThroughDigitsOfOnes) {
  for (size_t vectors = 1; vectors <= kRadix52MostVectors; vectors = NextVectors(vectors)) {
    const size_t count = vectors * kRadix52PerVector;
    Mpz m, base, got;
    mpz_setbit(m, static_cast<mp_bitcnt_t>(count * kRadix52Bits - kRadix52Spare));
    mpz_sub_ui(m, m, 1);
    mpz_setbit(base, static_cast<mp_bitcnt_t>(count * kRadix52Bits));
    const DigitModulus of(m, count);
    Digits one(count);
    one[0] = 1;
    for (size_t bit = 1; bit + 5 < count * kRadix52Bits; bit += 17 + vectors * vectors / 8) {
      Mpz value, x;
      mpz_setbit(value, static_cast<mp_bitcnt_t>(bit));
      mpz_mul(x, value, base);
      mpz_mod(x, x, m);
      Digits zd(count);
      Radix52ProductFor(vectors)(zd.data(), ExportDigits(x, count).data(), one.data(), of.modulus,
                                 count);
      ImportDigits(got, zd);
      mpz_mod(got, got, m);
      ASSERT_EQ(mpz_cmp(got, value), 0) << vectors << " " << bit;
    }
  }
}

void ExpectSamePower(uint32_t bits, uint32_t exponent_bits, int i) {
  Mpz m;
  RandomModulus(m, bits, i);
  const size_t n = (bits + kLimbBits - 1) / kLimbBits;
  const Limbs modulus = Export(m, n);
  Mpz x;
  const Mpz random(RandomBigOf(bits));
  mpz_mod(x, random, m);
  if (i % 5 == 0) mpz_sub_ui(x, m, 1);
  if (i % 11 == 0) mpz_set_ui(x, static_cast<unsigned long>(i % 2));
  Mpz exponent(RandomBigOf(exponent_bits));
  mpz_setbit(exponent, exponent_bits - 1);
  const size_t en = (exponent_bits + kLimbBits - 1) / kLimbBits;
  const Limbs base = Export(x, n), e = Export(exponent, en);
  Limbs by_digits(n, 1), by_limbs(n, 2);
  ASSERT_TRUE(Radix52Power(by_digits.data(), base.data(), e.data(), en, modulus.data(), n));
  ASSERT_TRUE(MontgomeryPower(by_limbs.data(), base.data(), e.data(), en, modulus.data(), n));
  ASSERT_EQ(by_digits, by_limbs) << bits;
  Mpz power;
  mpz_powm(power, x, exponent, m);
  ASSERT_EQ(by_digits, Export(power, n)) << bits;
}

TEST_F(Radix52Test, PowersOfEverySizeAgreeWithThePeer) {
  for (uint32_t bits = 60; bits <= kRadix52PowerMostBits; bits += 1 + Below(bits / 16)) {
    ExpectSamePower(bits, 1 + Below(200), static_cast<int>(bits));
    if (bits > 5000) bits += bits / 4;
  }
  ExpectSamePower(kRadix52PowerMostBits, 60, 1);
  // Where the number of digits or of vectors increases, and the ends of the range.
  for (uint32_t digits = 8; digits <= 80; digits += 8) {
    for (uint32_t bits = digits * kRadix52Bits - 4; bits <= digits * kRadix52Bits; ++bits) {
      if (bits > kRadix52PowerMostBits) break;
      for (int i = 0; i < Cases(3); ++i) ExpectSamePower(bits, 1 + Below(40), i * 3);
    }
  }
}

TEST_F(Radix52Test, PowersWithLongExponentsAgreeWithThePeer) {
  for (const uint32_t bits : {520u, 1024u, 1030u, 2048u}) {
    for (int i = 0; i < Cases(2); ++i) ExpectSamePower(bits, bits, i);
  }
  ExpectSamePower(4096, 1900, 1);
}

TEST_F(Radix52Test, TheKernelTakesItsSizesOnly) {
  const uint32_t all = ~0u;
  EXPECT_EQ(ChoosePower(kRadix52PowerLeastBits, all).function, Radix52Power);
  EXPECT_EQ(ChoosePower(kRadix52PowerMostBits, all).function, Radix52Power);
  EXPECT_NE(ChoosePower(kRadix52PowerLeastBits - 1, all).function, Radix52Power);
  EXPECT_NE(ChoosePower(kRadix52PowerMostBits + 1, all).function, Radix52Power);
  EXPECT_NE(ChoosePower(2048, all & ~kFeatureAvx512Ifma).function, Radix52Power);
}

#endif

}  // namespace
}  // namespace mirolta
