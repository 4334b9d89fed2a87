// Keys from given starting values, and the raw operations at their edges.
#include "rsa_key.h"

#include "gcd.h"
#include "limb.h"
#include "mod_exp.h"
#include "rsa_testing.h"

namespace mirolta::test {
namespace {

RsaKey Build(const BigInt& first, const BigInt& second, uint32_t e = 0) {
  RsaKey key;
  key.e = BigInt(e);
  EXPECT_EQ(BuildKey(key, first, second), S_OK);
  return key;
}

// The first prime of the form k * divisor + 1 that is large enough for the prime search.
BigInt PrimeOver(uint32_t divisor, uint32_t first_k = 2000) {
  for (uint32_t k = first_k;; ++k) {
    Bn candidate(static_cast<unsigned long>(k) * divisor + 1);
    if (IsPrime(candidate)) return candidate.Here();
  }
}

TEST(RsaKeyTest, PrimesAreTheNextAfterTheStartingValues) {
  const RsaKey key = Build(BigInt(1000000), BigInt(2000000));
  EXPECT_EQ(Hex(key.p), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(key.q), Hex(BigInt(2000003)));
  EXPECT_EQ(Hex(key.e), "10001");
  ExpectKeyHolds(key);
  // A starting value that is a prime already is taken.
  EXPECT_EQ(Hex(Build(BigInt(1000003), BigInt(2000003)).n), Hex(key.n));
}

TEST(RsaKeyTest, TheSmallerPrimeIsP) {
  const RsaKey key = Build(BigInt(2000000), BigInt(1000000));
  EXPECT_EQ(Hex(key.p), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(key.q), Hex(BigInt(2000003)));
  ExpectKeyHolds(key);
}

TEST(RsaKeyTest, SmallStartingValuesGiveTheSamePrimeTwice) {
  for (const uint32_t start : {0u, 1u, 2u, 3u, 1223u, 1224u, 1229u}) {
    const RsaKey key = Build(BigInt(start), BigInt(0));
    EXPECT_EQ(Hex(key.p), Hex(BigInt(1229)));
    EXPECT_EQ(Hex(key.q), Hex(BigInt(1229)));
    EXPECT_EQ(Hex(key.n), Hex(BigInt(1229 * 1229)));
    ExpectKeyHolds(key);
  }
  EXPECT_EQ(Hex(Build(BigInt(1230), BigInt(0)).q), Hex(BigInt(1231)));
}

TEST(RsaKeyTest, APublicExponentThatIsCoprimeIsKept) {
  // 1000003 - 1 = 2 * 3 * 166667, 2000003 - 1 = 2 * 101 * 9901
  for (const uint32_t e : {1u, 5u, 11u, 17u, 257u, 65539u}) {
    const RsaKey key = Build(BigInt(1000003), BigInt(2000003), e);
    EXPECT_EQ(Hex(key.e), Hex(BigInt(e)));
    ExpectKeyHolds(key);
  }
}

TEST(RsaKeyTest, APublicExponentThatIsNotCoprimeIsAdvanced) {
  // 2^32 - 1 = 3 * 5 * 17 * 257 * 65537, so the search goes on beyond the word.
  const struct {
    uint32_t given;
    const char* used;
  } rows[] = {
      {3, "5"}, {101, "67"}, {99, "67"}, {9901, "26b1"},   {166667, "28b0d"},         {2, "5"},
      {4, "5"}, {16, "11"},  {8, "b"},   {65536, "10001"}, {4294967295u, "100000001"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.given);
    const RsaKey key = Build(BigInt(1000003), BigInt(2000003), row.given);
    EXPECT_EQ(Hex(key.e), row.used);
    ExpectKeyHolds(key);
  }
}

TEST(RsaKeyTest, TheDefaultExponentIsAdvancedForEitherPrime) {
  const BigInt awkward = PrimeOver(65537);
  const BigInt other(1000003);
  ASSERT_TRUE((awkward - BigInt(1)) % BigInt(65537) == BigInt(0));
  for (const bool first : {true, false}) {
    const RsaKey key = first ? Build(awkward, other) : Build(other, awkward);
    EXPECT_EQ(Hex(key.e), Hex(BigInt(65539)));
    ExpectKeyHolds(key);
  }
  // Both in the way, one after the other.
  const BigInt next_awkward = PrimeOver(65539);
  const RsaKey key = Build(awkward, next_awkward);
  EXPECT_EQ(Hex(key.e), Hex(BigInt(65541)));
  ExpectKeyHolds(key);
}

TEST(RsaKeyTest, ResetClearsAllNumbers) {
  RsaKey key = Build(BigInt(1000003), BigInt(2000003));
  key.Reset();
  EXPECT_EQ(TextOf(key), "0 0 0 0 0");
}

TEST(RsaKeyTest, DecryptionsInvertEncryptionForEveryMessage) {
  RsaKey key = SmallKey();
  for (uint32_t m = 0; m < 3233; ++m) {
    BigInt c, back, by_primes;
    ASSERT_EQ(RsaEncrypt(c, key, BigInt(m)), S_OK);
    ASSERT_EQ(RsaDecrypt(back, key, c), S_OK);
    ASSERT_EQ(RsaDecryptWithPrimes(by_primes, key, c), S_OK);
    ASSERT_TRUE(back == BigInt(m)) << m;
    ASSERT_TRUE(by_primes == BigInt(m)) << m;
  }
}

TEST(RsaKeyTest, CiphertextIsReducedByTheModulus) {
  RsaKey key = SmallKey();
  for (uint32_t c = 0; c < 50; ++c) {
    BigInt small, large;
    ASSERT_EQ(RsaDecrypt(small, key, BigInt(c)), S_OK);
    ASSERT_EQ(RsaDecrypt(large, key, BigInt(c + 3233 * 77)), S_OK);
    EXPECT_TRUE(small == large);
    ASSERT_EQ(RsaDecryptWithPrimes(large, key, BigInt(c + 3233 * 77)), S_OK);
    EXPECT_TRUE(small == large);
  }
}

TEST(RsaKeyTest, ASecretExponentOfZeroGivesOneModuloTheModulus) {
  BigInt r(9);
  EXPECT_EQ(RsaDecrypt(r, KeyOf(BigInt(3233), BigInt(17), BigInt(), BigInt(), BigInt()), BigInt(5)),
            S_OK);
  EXPECT_EQ(Hex(r), "1");
  EXPECT_EQ(RsaDecrypt(r, KeyOf(BigInt(1), BigInt(17), BigInt(), BigInt(), BigInt()), BigInt(5)),
            S_OK);
  EXPECT_EQ(Hex(r), "0");
}

TEST(RsaKeyTest, AModulusOfZeroIsRefusedByTheOperationsThatUseIt) {
  RsaKey key = SmallKey();
  key.n = BigInt();
  BigInt r(9);
  EXPECT_EQ(RsaEncrypt(r, key, BigInt(5)), E_INVALIDARG);
  EXPECT_EQ(RsaDecrypt(r, key, BigInt(5)), E_INVALIDARG);
  EXPECT_EQ(Hex(r), "9");
  // The primes do not need it.
  EXPECT_EQ(RsaDecryptWithPrimes(r, key, BigInt(855)), S_OK);
  EXPECT_EQ(Hex(r), Hex(Power(Bn(855), Bn(2753), Bn(3233)).Here()));
}

TEST(RsaKeyTest, PrimesOfZeroAndOneAreRefused) {
  const BigInt small[] = {BigInt(0), BigInt(1)};
  for (const BigInt& one : small) {
    for (const BigInt& other : {BigInt(0), BigInt(1), BigInt(61)}) {
      for (const bool first : {true, false}) {
        RsaKey key = SmallKey();
        key.p = first ? one : other;
        key.q = first ? other : one;
        BigInt r(9);
        EXPECT_EQ(RsaDecryptWithPrimes(r, key, BigInt(5)), E_INVALIDARG)
            << Hex(key.p) << " " << Hex(key.q);
        EXPECT_EQ(Hex(r), "9");
      }
    }
  }
}

// The steps as they are for any numbers, by the peer: remainders follow the sign of the dividend.
BigInt StepByStep(const RsaKey& key, const Bn& c) {
  const Bn p(key.p), q(key.q);
  Bn d, p_inverse, dp, dq, m1, m2;
  BN_mod_inverse(d, Bn(key.e), Times(Less1(p), Less1(q)), Context());
  BN_mod_inverse(p_inverse, p, q, Context());
  BN_mod(dp, d, Less1(p), Context());
  BN_mod(dq, d, Less1(q), Context());
  BN_mod_exp(m1, c, dp, p, Context());
  BN_mod_exp(m2, c, dq, q, Context());
  if (BN_cmp(m2, m1) < 0) BN_add(m2, m2, q);
  Bn difference, rest, result;
  BN_sub(difference, m2, m1);
  BN_mod(rest, Times(difference, p_inverse), q, Context());
  BN_add(result, m1, Times(p, rest));
  BigInt here = result.Here();
  here.SetSignFlag(BN_is_negative(static_cast<const BIGNUM*>(result)));
  return here;
}

// With p above q one addition of q need not be enough, and the result is another number.
TEST(RsaKeyTest, PrimesInDescendingOrderAreUsedAsTheyAre) {
  RsaKey right = Build(BigInt(1000000), BigInt(40000000), 5);
  RsaKey wrong = right;
  wrong.p.Swap(wrong.q);
  int other = 0;
  for (uint32_t i = 1; i <= 200; ++i) {
    const BigInt c(i * 20011301u);
    BigInt straight, r;
    ASSERT_EQ(RsaDecryptWithPrimes(straight, right, c), S_OK);
    EXPECT_EQ(Hex(straight), Hex(StepByStep(right, Bn(c))));
    ASSERT_EQ(RsaDecryptWithPrimes(r, wrong, c), S_OK);
    ASSERT_EQ(Hex(r), Hex(StepByStep(wrong, Bn(c)))) << i;
    if (!(r == straight)) ++other;
  }
  EXPECT_GT(other, 0);
}

uint32_t Draw(std::mt19937* generator) {
  return static_cast<uint32_t>((*generator)());
}

// A number of so many bits, its top bit set.
BigInt RandomBits(std::mt19937* generator, uint32_t bits) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite((bits + 31) / 32);
  for (uint32_t i = 0; i < (bits + 31) / 32; ++i) m->Words()[i] = Draw(generator);
  const uint32_t top = (bits - 1) % 32;
  uint32_t* const last = m->Words() + (bits - 1) / 32;
  *last = (*last & ((1u << top) - 1)) | 1u << top;
  m->Normalise();
  return n;
}

// Any numbers for which the peer finds the inverses: no primes, even ones, equal ones, either
// order.
TEST(RsaKeyTest, NumbersThatAreNoPrimesGoThroughTheSameSteps) {
  std::mt19937 generator(61);
  int compared = 0;
  int one_limb = 0;
  for (int i = 0; i < 6000; ++i) {
    const uint32_t bits = 2 + Draw(&generator) % 67;
    const BigInt p = RandomBits(&generator, bits);
    const BigInt q = i % 50 == 0 ? p : RandomBits(&generator, 2 + (bits + Draw(&generator) % 9) % 67);
    const BigInt c = RandomBits(&generator, 1 + Draw(&generator) % 200);
    RsaKey key = KeyOf(BigInt(), BigInt(3 + 2 * (Draw(&generator) % 1000)), p, q, BigInt(1));
    const Bn order = Times(Less1(Bn(p)), Less1(Bn(q)));
    Bn inverse;
    const bool has_inverses =
        BN_mod_inverse(inverse, Bn(key.e), order, Context()) != nullptr &&
        BN_mod_inverse(inverse, Bn(p), Bn(q), Context()) != nullptr;
    BigInt first, second;
    const HRESULT status = RsaDecryptWithPrimes(first, key, c);
    EXPECT_EQ(RsaDecryptWithPrimes(second, key, c), status);
    if (SUCCEEDED(status)) {
      ASSERT_EQ(Hex(first), Hex(second)) << i;
    }
    if (!has_inverses) continue;
    ASSERT_EQ(status, S_OK);
    ASSERT_EQ(Hex(first), Hex(StepByStep(key, Bn(c)))) << Hex(p) << " " << Hex(q) << " " << Hex(c);
    ++compared;
    if (p.IsOdd() && q.IsOdd() && bits <= kLimbBits) ++one_limb;
  }
  EXPECT_GT(compared, 1000);
  EXPECT_GT(one_limb, 200);
}

// The steps by the numbers' own operations, which know signs.
HRESULT StepByStepWithSigns(BigInt& r, const RsaKey& key, const BigInt& c) {
  const BigInt p_less_1 = key.p - BigInt(1), q_less_1 = key.q - BigInt(1);
  BigInt d, p_inverse, m1, m2;
  HRESULT status = Inverse(d, key.e, p_less_1 * q_less_1);
  if (SUCCEEDED(status)) status = Inverse(p_inverse, key.p, key.q);
  if (SUCCEEDED(status)) status = ModExp(m1, c % key.p, d % p_less_1, key.p);
  if (SUCCEEDED(status)) status = ModExp(m2, c % key.q, d % q_less_1, key.q);
  if (SUCCEEDED(status) && m2 < m1) status = m2.Add(key.q);
  if (SUCCEEDED(status)) r = m1 + key.p * (((m2 - m1) * p_inverse) % key.q);
  return status;
}

TEST(RsaKeyTest, NegativeNumbersGoThroughTheSameSteps) {
  std::mt19937 generator(67);
  for (int i = 0; i < 800; ++i) {
    RsaKey key = KeyOf(BigInt(), BigInt(3 + 2 * (Draw(&generator) % 50)),
                       RandomBits(&generator, 2 + Draw(&generator) % 30),
                       RandomBits(&generator, 2 + Draw(&generator) % 30), BigInt(1));
    BigInt c = RandomBits(&generator, 1 + Draw(&generator) % 60);
    key.e.SetSignFlag(i % 2 != 0);
    key.p.SetSignFlag(i % 4 / 2 != 0);
    key.q.SetSignFlag(i % 8 / 4 != 0);
    c.SetSignFlag(i % 16 / 8 != 0);
    BigInt expected, r;
    const HRESULT status = StepByStepWithSigns(expected, key, c);
    ASSERT_EQ(RsaDecryptWithPrimes(r, key, c), status == DISP_E_DIVBYZERO ? E_INVALIDARG : status);
    if (SUCCEEDED(status)) {
      ASSERT_EQ(Hex(r), Hex(expected)) << i;
      ASSERT_EQ(r.SignFlag(), expected.SignFlag()) << i;
    }
  }
}

// What a decryption keeps is of the numbers as they are, whichever of them was changed.
TEST(RsaKeyTest, KeptValuesFollowEveryChangeOfTheKey) {
  const BigInt c(0x12345678);
  for (const uint32_t start : {1u << 20, 1u << 31}) {
    RsaKey key = Build(BigInt(start), BigInt(start + 12345));
    RsaKey other = Build(BigInt(start + 99999), BigInt(start + 777777), 17);
    const auto expect_fresh = [&c](RsaKey& changed) {
      RsaKey fresh = KeyOf(changed.n, changed.e, changed.p, changed.q, changed.d);
      BigInt expected, r;
      const HRESULT status = RsaDecryptWithPrimes(expected, fresh, c);
      ASSERT_EQ(RsaDecryptWithPrimes(r, changed, c), status);
      if (SUCCEEDED(status)) {
        ASSERT_EQ(Hex(r), Hex(expected));
      }
    };
    expect_fresh(key);
    key.e = other.e;
    expect_fresh(key);
    key.p = other.p;
    expect_fresh(key);
    key.q = other.q;
    expect_fresh(key);
    key.p.Swap(key.q);
    expect_fresh(key);
    ASSERT_EQ(key.p.Add(BigInt(2)), S_OK);  // in place
    expect_fresh(key);
    for (BigInt RsaKey::*const field : {&RsaKey::e, &RsaKey::p, &RsaKey::q}) {
      const BigInt before = key.*field;
      key.*field = BigInt();
      expect_fresh(key);
      key.*field = before;
      expect_fresh(key);
    }
  }
}

bool KeepsNothing(const RsaKey& key) {
  const RsaPrimeValues& kept = key.values;
  for (const BigInt* n : {&kept.e, &kept.p, &kept.q, &kept.d_p, &kept.d_q, &kept.p_inverse}) {
    if (!n->IsZero()) return false;
  }
  return true;
}

TEST(RsaKeyTest, ANewKeyAndResetDropTheKeptValues) {
  RsaKey key = Build(BigInt(1000000), BigInt(2000000));
  BigInt r;
  ASSERT_EQ(RsaDecryptWithPrimes(r, key, BigInt(5)), S_OK);
  EXPECT_FALSE(KeepsNothing(key));
  BigInt first(1000003), second(2000003);
  ASSERT_EQ(BuildKeyFromPrimes(key, first, second), S_OK);
  EXPECT_TRUE(KeepsNothing(key));
  ASSERT_EQ(RsaDecryptWithPrimes(r, key, BigInt(5)), S_OK);
  EXPECT_FALSE(KeepsNothing(key));
  key.Reset();
  EXPECT_TRUE(KeepsNothing(key));
}

// Numbers that are no key at all: every call ends.
TEST(RsaKeyTest, DecryptionEndsForAnyNumbers) {
  for (uint32_t p = 2; p < 20; ++p) {
    for (uint32_t q = 2; q < 20; ++q) {
      for (uint32_t e = 1; e < 6; ++e) {
        RsaKey key = KeyOf(BigInt(p * q), BigInt(e), BigInt(p), BigInt(q), BigInt(3));
        BigInt r;
        const HRESULT status = RsaDecryptWithPrimes(r, key, BigInt(p + q));
        EXPECT_TRUE(status == S_OK || status == E_INVALIDARG);
      }
    }
  }
}

TEST(RsaKeyTest, BlocksOfBlockSizeBytesAreBelowTheModulus) {
  constexpr struct {
    uint32_t modulus;
    LONG size;
  } kRows[] = {{0, 0}, {1, 0}, {127, 0}, {128, 0}, {255, 0}, {256, 1}, {65535, 1}, {65536, 2}};
  for (const auto& row : kRows) EXPECT_EQ(BlockSize(BigInt(row.modulus)), row.size) << row.modulus;
  EXPECT_EQ(BlockSize(FromHex("8" + std::string(63, '0'))), 31);
  EXPECT_EQ(BlockSize(FromHex(std::string(64, 'f'))), 31);
  EXPECT_EQ(BlockSize(FromHex("1" + std::string(64, '0'))), 32);
  // The largest number of so many bytes is below the modulus; one byte more need not be.
  for (uint32_t bits = 1; bits < 100; ++bits) {
    const BigInt least =
        FromHex(std::string(1, "1248"[(bits - 1) % 4]) + std::string((bits - 1) / 4, '0'));
    ASSERT_EQ(least.BitLength(), bits);
    const size_t bytes = static_cast<size_t>(BlockSize(least));
    EXPECT_TRUE(FromHex(std::string(2 * bytes, 'f')) < least);
    EXPECT_FALSE(FromHex(std::string(2 * bytes + 2, 'f')) < least);
  }
}

}  // namespace
}  // namespace mirolta::test
