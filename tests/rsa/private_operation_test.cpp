// The constant-time private operation: what it takes, and the generator that it draws from.
#include "private_operation.h"

#include "limb_basics.h"
#include "mod_exp.h"
#include "rsa_testing.h"

namespace mirolta::test {
namespace {

// A generator that returns one number always, or cannot be seeded.
struct ConstantSource {
  static inline bool is_seeded = true;
  static inline uint32_t number = 0;
  static inline uint32_t draws = 0;
  static bool Seed(uint32_t) { return is_seeded; }
  static uint32_t Next() {
    ++draws;
    return number;
  }
};
constexpr RandomSource kConstantSource = {ConstantSource::Seed, ConstantSource::Next};

class PrivateOperationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ConstantSource::is_seeded = true;
    ConstantSource::number = 0;
    ConstantSource::draws = 0;
    ASSERT_EQ(BuildKey(key_, Power(Bn(7), Bn(100), Bn(BigInt(1) + Huge())).Here(),
                       Power(Bn(5), Bn(120), Bn(BigInt(1) + Huge())).Here()),
              S_OK);
    SetRandomSource(&kConstantSource);
  }
  void TearDown() override { SetRandomSource(nullptr); }

  // 2^300.
  static BigInt Huge() {
    BigInt power(1);
    for (int i = 0; i < 300; ++i) EXPECT_EQ(power.Add(power), S_OK);
    return power;
  }

  RsaKey key_;
};

TEST_F(PrivateOperationTest, ResultsDoNotDependOnTheNumbersDrawn) {
  const BigInt c = Huge();
  BigInt expected;
  ASSERT_EQ(ModExp(expected, c, key_.d, key_.n), S_OK);
  for (const uint32_t number : {0u, 1u, 0x55555555u, 0x7FFFFFFFu}) {
    ConstantSource::number = number;
    BigInt r, by_primes;
    ASSERT_EQ(RsaDecrypt(r, key_, c), S_OK);
    EXPECT_EQ(Hex(r), Hex(expected));
    ASSERT_EQ(RsaDecryptWithPrimes(by_primes, key_, c), S_OK);
    EXPECT_EQ(Hex(by_primes), Hex(expected));
  }
}

TEST_F(PrivateOperationTest, EveryCallDrawsNewFactors) {
  BigInt r;
  ASSERT_EQ(RsaDecrypt(r, key_, BigInt(2)), S_OK);
  const uint32_t for_one = ConstantSource::draws;
  EXPECT_EQ(for_one, kLimbBits / 16);
  for (uint32_t i = 0; i < 2; ++i) {
    ConstantSource::draws = 0;
    ASSERT_EQ(RsaDecryptWithPrimes(r, key_, BigInt(2)), S_OK);
    EXPECT_EQ(ConstantSource::draws, 2 * for_one);
  }
}

TEST_F(PrivateOperationTest, FactorsHaveTheirTopBitAndAllNumbersDrawn) {
  Limb factors[2] = {};
  ConstantSource::number = 0x7FFF1234u;
  ASSERT_EQ(DrawFactors(factors, 2), S_OK);
  Limb expected = 0;
  for (uint32_t bit = 0; bit < kLimbBits; bit += 16) expected |= Limb{0x1234} << bit;
  expected |= Limb{1} << (kLimbBits - 1);
  EXPECT_EQ(factors[0], expected);
  EXPECT_EQ(factors[1], expected);
}

TEST_F(PrivateOperationTest, WithoutEntropyNothingIsComputed) {
  ConstantSource::is_seeded = false;
  BigInt r(9);
  EXPECT_EQ(RsaDecrypt(r, key_, BigInt(2)), E_FAIL);
  EXPECT_EQ(RsaDecryptWithPrimes(r, key_, BigInt(2)), E_FAIL);
  EXPECT_EQ(Hex(r), "9");
  EXPECT_TRUE(key_.values.p.IsZero());
  // Encryption has no secret.
  EXPECT_EQ(RsaEncrypt(r, key_, BigInt(2)), S_OK);
}

TEST_F(PrivateOperationTest, OddModuliOfMoreThanTwoLimbsAreTaken) {
  const BigInt huge = Huge();
  BigInt odd = huge + BigInt(1);
  BigInt negative = odd;
  negative.SetSignFlag(true);
  const BigInt two_limbs = BigInt(1) + Power(Bn(2), Bn(kLimbBits * 2 - 1), Bn(huge)).Here();
  const BigInt three_limbs = BigInt(1) + Power(Bn(2), Bn(kLimbBits * 2), Bn(huge)).Here();
  const struct {
    BigInt n;
    BigInt d;
    bool taken;
  } rows[] = {{odd, BigInt(5), true},        {huge, BigInt(5), false},
              {negative, BigInt(5), false},  {odd, BigInt(), false},
              {BigInt(1), BigInt(5), false}, {BigInt(), BigInt(5), false},
              {two_limbs, BigInt(5), false}, {three_limbs, BigInt(5), true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(Hex(row.n));
    BigInt r(9), expected;
    bool done = false;
    ASSERT_EQ(SecretPowerModulo(&done, r, huge, row.d, row.n), S_OK);
    EXPECT_EQ(done, row.taken);
    if (done) {
      ASSERT_EQ(ModExp(expected, huge, row.d, row.n), S_OK);
    }
    EXPECT_EQ(Hex(r), done ? Hex(expected) : "9");
  }
}

TEST_F(PrivateOperationTest, TheSignIsThatOfThePower) {
  BigInt base = Huge();
  base.SetSignFlag(true);
  for (const uint32_t d : {4u, 5u}) {
    BigInt r, expected;
    bool done = false;
    ASSERT_EQ(SecretPowerModulo(&done, r, base, BigInt(d), key_.n), S_OK);
    ASSERT_TRUE(done);
    ASSERT_EQ(ModExp(expected, base, BigInt(d), key_.n), S_OK);
    EXPECT_EQ(r.SignFlag(), expected.SignFlag());
    EXPECT_EQ(Hex(r), Hex(expected));
  }
}

TEST_F(PrivateOperationTest, OrderedOddPrimesAreTaken) {
  BigInt r(9);
  ASSERT_EQ(RsaDecryptWithPrimes(r, key_, BigInt(2)), S_OK);
  const auto expect_taken = [&](const RsaPrimeValues& values, bool taken) {
    bool done = false;
    ASSERT_EQ(SecretPowersModuloPrimes(&done, r, values, BigInt(2)), S_OK);
    EXPECT_EQ(done, taken);
  };
  expect_taken(key_.values, true);
  RsaPrimeValues swapped = key_.values;
  swapped.p.Swap(swapped.q);
  expect_taken(swapped, false);
  for (BigInt RsaPrimeValues::*const prime : {&RsaPrimeValues::p, &RsaPrimeValues::q}) {
    RsaPrimeValues even = key_.values;
    ASSERT_EQ((even.*prime).Add(BigInt(1)), S_OK);
    expect_taken(even, false);
    RsaPrimeValues negative = key_.values;
    (negative.*prime).SetSignFlag(true);
    expect_taken(negative, false);
  }
}

// Each order of the residues, and a p that is shorter by limbs.
TEST_F(PrivateOperationTest, ResiduesAreJoined) {
  const Limb p[] = {7};
  const Limb q[] = {11, 1};  // B + 11
  const BigInt q_number = [&] {
    BigInt n;
    EXPECT_EQ(n.AssignLimbs(q, 2), S_OK);
    return n;
  }();
  BigInt inverse;
  Bn inverse_peer;
  BN_mod_inverse(inverse_peer, Bn(7), Bn(q_number), Context());
  inverse = inverse_peer.Here();
  Limb p_inverse[2] = {};
  LimbsFromWords(p_inverse, inverse.Magnitude().Words(), inverse.Used());
  Bn power, square_peer;
  BN_set_bit(power, 4 * static_cast<int>(kLimbBits));
  BN_mod(square_peer, power, Bn(q_number), Context());
  const BigInt square = square_peer.Here();
  Limb q_square[2] = {};
  LimbsFromWords(q_square, square.Magnitude().Words(), square.Used());
  for (Limb residue = 0; residue < 7; ++residue) {
    for (const Limb other : {Limb{0}, Limb{3}, Limb{6}, kLimbMax}) {
      const Limb m1[2] = {residue, 0};
      Limb m2[2] = {other, 0};
      Limb z[3] = {9, 9, 9};
      ASSERT_TRUE(
          JoinResidues(z, m1, m2, p, 1, q, 2, p_inverse, residue % 2 == 0 ? nullptr : q_square));
      BigInt joined, expected_rest;
      ASSERT_EQ(joined.AssignLimbs(z, 3), S_OK);
      ASSERT_EQ(expected_rest.AssignLimbs(&other, 1), S_OK);
      EXPECT_TRUE(joined < q_number * BigInt(7));
      EXPECT_EQ(Hex(joined % BigInt(7)), Hex(BigInt(static_cast<uint32_t>(residue))));
      EXPECT_EQ(Hex(joined % q_number), Hex(expected_rest));
    }
  }
}

}  // namespace
}  // namespace mirolta::test
