// Powers with secret exponents, by every method, against the peer.
#include "secret_power.h"

#include <gtest/gtest.h>

#include "kernel_rows.h"
#include "limb_testing.h"
#include "radix52_ifma.h"
#include "secret_residues.h"
#include "secret_window.h"

namespace mirolta {
namespace {

constexpr Limb kTop = Limb{1} << (kLimbBits - 1);

// One power with its numbers.
struct OnePower {
  Mpz base, exponent, modulus;
  Limbs x, e, m, z, square;
  size_t most_exponent_bits;
  Limb factor = kTop;

  // Base and exponent have any lengths; every seventh is extreme.
  OnePower(uint32_t bits, uint32_t base_bits, uint32_t exponent_bits, int i) {
    const Mpz random(RandomBigOf(bits)), x_random(RandomBigOf(base_bits)),
        e_random(RandomBigOf(exponent_bits));
    mpz_set(modulus, random);
    mpz_setbit(modulus, bits - 1);
    mpz_setbit(modulus, 0);
    mpz_set(base, x_random);
    mpz_set(exponent, e_random);
    if (i % 7 == 1) AllOnes(modulus, bits);
    if (i % 7 == 2) mpz_set_ui(exponent, 0);
    if (i % 7 == 3) AllOnes(exponent, exponent_bits);
    if (i % 7 == 4) mpz_set_ui(base, static_cast<unsigned long>(i / 7 % 2));
    if (i % 7 == 5) mpz_sub_ui(base, modulus, 1);
    if (i % 7 == 6) mpz_set(base, modulus);
    x = Export(base, LimbsFor(base_bits > bits ? base_bits : bits));
    e = Export(exponent, LimbsFor(exponent_bits));
    m = Export(modulus, LimbsFor(bits));
    z.assign(m.size(), 5);
    most_exponent_bits = exponent_bits + (i % 4 == 0 ? Below(200) : 0);
    if (i % 3 == 1) {
      Mpz power;
      mpz_setbit(power, 2 * m.size() * kLimbBits);
      mpz_mod(power, power, modulus);
      square = Export(power, m.size());
    }
    for (uint32_t j = 0; j < 32; ++j) factor = factor << 2 ^ Below(1u << 16);
    factor |= kTop;
    if (i % 5 == 0) factor = kTop;
    if (i % 5 == 1) factor = kLimbMax;
  }

  void UseLargestBase() {
    x.assign(x.size(), kLimbMax);
    Import(base, x);
  }

  static size_t LimbsFor(uint32_t bits) { return (bits + kLimbBits - 1) / kLimbBits; }
  static void AllOnes(Mpz& n, uint32_t bits) {
    mpz_set_ui(n, 1);
    mpz_mul_2exp(n, n, bits);
    mpz_sub_ui(n, n, 1);
  }

  SecretPower Power() {
    return {z.data(), x.data(), x.size(),
            e.data(), e.size(), most_exponent_bits,
            m.data(), m.size(), square.empty() ? nullptr : square.data(),
            factor};
  }
  void Expect() {
    Mpz power;
    mpz_powm(power, base, exponent, modulus);
    ASSERT_EQ(z, Export(power, m.size())) << mpz_sizeinbase(modulus, 2);
  }
};

void ExpectPowers(const SecretPowerMethod& method, uint32_t bits, uint32_t exponent_bits, int i) {
  OnePower first(bits, 1 + Below(3 * bits), exponent_bits, i);
  // The second modulus may be shorter.
  OnePower second(bits - Below(bits / 8 + 1), 1 + Below(3 * bits), 1 + Below(exponent_bits), i / 3);
  const SecretPower powers[] = {first.Power(), second.Power()};
  ASSERT_TRUE(method.raise(powers));
  first.Expect();
  if (method.powers == 2) second.Expect();
}

TEST(SecretPowerTest, PowersByEveryMethodAgreeWithThePeer) {
  test::ForEachKernel(kSecretPowerKernels, [](const auto& row) {
    const SecretPowerMethod& method = *row.function;
    const uint32_t most = static_cast<uint32_t>(method.most_bits < 2400 ? method.most_bits : 2400);
    int i = 0;
    for (uint32_t bits = static_cast<uint32_t>(method.least_bits) + 2; bits <= most;
         bits += 1 + Below(bits / 4 * kFewerCases + 1)) {
      ExpectPowers(method, bits, 1 + Below(300), i++);
    }
    // Around whole limbs and vectors.
    for (const uint32_t bits : {64u, 128u, 192u, 256u, 384u, 512u, 830u, 1024u, 1248u}) {
      for (uint32_t at = bits - 3; at <= bits + 3; ++at) {
        if (at < method.least_bits || at > method.most_bits) continue;
        ExpectPowers(method, at, 1 + Below(100), i++);
      }
    }
    // Bases of whole limbs may be above the modulus.
    for (const uint32_t bits : {512u, 1024u, 2048u}) {
      if (method.powers == 2) break;
      for (i = 0; i < Cases(14); ++i) {
        OnePower power(bits, bits, 1 + Below(100), i);
        power.square.clear();
        if (i % 2 == 0) power.UseLargestBase();
        const SecretPower raised = power.Power();
        ASSERT_TRUE(method.raise(&raised));
        power.Expect();
      }
    }
    ExpectPowers(method, most, most, 3);
    // Exponents of all ones up to and beyond the random factor's length.
    const uint32_t least = static_cast<uint32_t>(method.least_bits) + 2;
    for (uint32_t bits = 1; bits < 3 * kLimbBits; ++bits) {
      OnePower first(least, least, bits, 3), second(least, least, bits, 3);
      const SecretPower powers[] = {first.Power(), second.Power()};
      ASSERT_TRUE(method.raise(powers));
      first.Expect();
      if (method.powers == 2) second.Expect();
    }
  });
}

TEST(SecretPowerTest, LongExponentsAgreeWithThePeer) {
  for (const uint32_t bits : {320u, 512u, 704u, 1024u}) {
    for (int i = 0; i < 8; ++i) {
      OnePower first(bits, bits, bits, i);
      OnePower second(bits, 2 * bits, bits + 40, i + 1);
      const SecretPower powers[] = {first.Power(), second.Power()};
      ASSERT_TRUE(RaiseToSecrets(powers, 2));
      first.Expect();
      second.Expect();
      ASSERT_TRUE(RaiseToSecrets(powers + 1, 1));
      second.Expect();
    }
  }
}

TEST(SecretPowerTest, ModuliOfVeryDifferentLengthsAreTakenOneByOne) {
  OnePower first(300, 900, 300, 0);
  OnePower second(900, 900, 900, 0);
  const SecretPower powers[] = {first.Power(), second.Power()};
  ASSERT_TRUE(RaiseToSecrets(powers, 2));
  first.Expect();
  second.Expect();
}

TEST(SecretPowerTest, MethodsTakeTheirLengthsOnly) {
  const uint32_t all = ~0u;
  for (const auto& row : kSecretPowerKernels) {
    const SecretPowerMethod& method = *row.function;
    EXPECT_EQ(ChooseSecretPower(method.powers, method.least_bits, row.needs), &method) << row.name;
    EXPECT_EQ(ChooseSecretPower(method.powers, method.most_bits, row.needs), &method) << row.name;
    if (row.needs == 0) continue;
    EXPECT_NE(ChooseSecretPower(method.powers, method.least_bits - 1, all), &method) << row.name;
    EXPECT_NE(ChooseSecretPower(method.powers, method.most_bits + 1, all), &method) << row.name;
    EXPECT_NE(ChooseSecretPower(method.powers, method.least_bits, all & ~row.needs), &method)
        << row.name;
  }
  EXPECT_EQ(ChooseSecretPower(2, 1024, 0), nullptr);
}

TEST(SecretPowerTest, SplitExponentsAreWhole) {
  for (int i = 0; i < 200; ++i) {
    OnePower power(200, 10, 1 + Below(500), i);
    Limbs quotient(power.e.size(), 7);
    const SplitExponent split =
        Split(quotient.data(), power.e.data(), power.e.size(), power.factor);
    EXPECT_LT(split.rest, split.factor);
    EXPECT_EQ(split.factor, power.factor);
    Mpz q, f, sum, rest;
    Import(q, quotient);
    Import(f, {split.factor});
    Import(rest, {split.rest});
    mpz_mul(sum, q, f);
    mpz_add(sum, sum, rest);
    ASSERT_EQ(mpz_cmp(sum, power.exponent), 0);
    // The exponentiation takes no more bits of the quotient.
    EXPECT_LE(mpz_sizeinbase(q, 2), power.e.size() * kLimbBits - (kLimbBits - 1));
  }
}

TEST(SecretPowerTest, EntriesAreSelected) {
  constexpr size_t kSize = 16, kStride = 40, kEntries = 32;
  Limbs table(kStride * kEntries);
  for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<Limb>(i + 1);
  for (size_t index = 0; index < kEntries; ++index) {
    const auto entry = table.begin() + static_cast<std::ptrdiff_t>(index * kStride);
    const Limbs wanted(entry, entry + kSize);
    Limbs z(kSize, 9);
    SelectEntryByMasks(z.data(), table.data(), kEntries, kStride, kSize, static_cast<Limb>(index));
    ASSERT_EQ(z, wanted);
#if MIROLTA_KERNELS_FOR(X86)
    if ((kRadix52Features & ~ProcessorFeatures()) != 0) continue;
    const std::vector<Digit52> digits(table.begin(), table.end());
    std::vector<Digit52> digit(kSize, 9);
    Radix52Select(digit.data(), digits.data(), kEntries, kStride, kSize, index);
    ASSERT_EQ(digit, std::vector<Digit52>(wanted.begin(), wanted.end()));
#endif
  }
}

TEST(SecretResiduesTest, DifferencesAndPowersOfTwoAgreeWithThePeer) {
  for (int i = 0; i < 200; ++i) {
    OnePower power(2 + Below(300), 10, 10, i);
    const size_t n = power.m.size();
    Limbs memory(SecretResidues::MemoryLimbs(n).Value()), x(n), y(n), z(n);
    SecretResidues residues(power.m.data(), n, memory.data());
    Mpz a(RandomBigOf(300)), b(RandomBigOf(300)), wanted;
    mpz_mod(a, a, power.modulus);
    mpz_mod(b, b, power.modulus);
    if (i % 3 == 0) mpz_set(b, a);
    x = Export(a, n);
    y = Export(b, n);
    residues.Subtract(z.data(), x.data(), y.data());
    mpz_sub(wanted, a, b);
    mpz_mod(wanted, wanted, power.modulus);
    ASSERT_EQ(z, Export(wanted, n));
    const uint32_t e = Below(1500);
    residues.PowerOfTwo(z.data(), e);
    residues.Leave(z.data(), z.data());
    mpz_set_ui(wanted, 1);
    mpz_mul_2exp(wanted, wanted, e);
    mpz_mod(wanted, wanted, power.modulus);
    ASSERT_EQ(z, Export(wanted, n));
  }
}

}  // namespace
}  // namespace mirolta
