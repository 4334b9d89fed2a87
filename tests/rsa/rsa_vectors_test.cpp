// Published keys and raw RSA: what signatures are, without their encoding.
#include <gtest/gtest.h>

#include "gcd.h"
#include "rsa_testing.h"
#include "vector_file.h"

namespace mirolta::test {
namespace {

BigInt Field(const VectorCase& one, const char* name) {
  return FromHex(one.Text(name));
}

// A prime is its own starting value. The published inverse is that modulo lcm(p - 1, q - 1).
TEST(RsaVectors, KeysOfPublishedPrimesArePublishedOnes) {
  CheckVectorFile(MIROLTA_VECTORS "/rsa_keys.txt", {"P", "Q", "Public", "Modulus", "Secret"},
                  [](const VectorCase& one) {
                    const BigInt p = Field(one, "P"), q = Field(one, "Q");
                    RsaKey key;
                    key.e = Field(one, "Public");
                    ASSERT_EQ(BuildKey(key, p, q), S_OK);
                    EXPECT_EQ(Hex(key.p), Hex(p < q ? p : q));
                    EXPECT_EQ(Hex(key.n), one.Text("Modulus"));
                    EXPECT_EQ(Hex(key.e), one.Text("Public"));
                    BigInt common;
                    const BigInt p1 = p - BigInt(1), q1 = q - BigInt(1);
                    ASSERT_EQ(Gcd(common, p1, q1), S_OK);
                    EXPECT_EQ(Hex(key.d % (p1 * q1 / common)), one.Text("Secret"));
                  });
}

// Of moduli beyond kAllSecretDigits, the secret operation is tried on the first case of each key only.
constexpr size_t kAllSecretDigits = 512;

struct Counts {
  size_t keys;
  size_t with_primes;
  size_t cases;
};

// Keys without a secret exponent are for the public operation.
void CheckRawOperations(const char* path, const Counts& expected) {
  RsaKey key;
  Counts counts = {};
  bool is_first = false;
  const auto check = [&](const VectorCase& one) {
    if (one.Has("Modulus")) {
      const bool has_primes = one.Has("P");
      key =
          KeyOf(Field(one, "Modulus"), Field(one, "Public"),
                has_primes ? Field(one, "P") : BigInt(0), has_primes ? Field(one, "Q") : BigInt(0),
                one.Has("Secret") ? Field(one, "Secret") : BigInt(0));
      ++counts.keys;
      counts.with_primes += has_primes;
      is_first = true;
      return;
    }
    ++counts.cases;
    const std::string& encoded = one.Text("Encoded");
    const std::string& signature = one.Text("Signature");
    BigInt result;
    ASSERT_EQ(RsaEncrypt(result, key, FromHex(signature)), S_OK);
    EXPECT_EQ(Hex(result), encoded);
    if (key.d.IsZero() || (!is_first && encoded.size() > kAllSecretDigits)) return;
    is_first = false;
    ASSERT_EQ(RsaDecrypt(result, key, FromHex(encoded)), S_OK);
    EXPECT_EQ(Hex(result), signature);
    if (key.p.IsZero()) return;
    ASSERT_EQ(RsaDecryptWithPrimes(result, key, FromHex(encoded)), S_OK);
    EXPECT_EQ(Hex(result), signature);
  };
  CheckVectorFile(path, {"Modulus", "Public", "Secret", "P", "Q", "Encoded", "Signature"}, check);
  EXPECT_EQ(counts.keys, expected.keys);
  EXPECT_EQ(counts.with_primes, expected.with_primes);
  EXPECT_EQ(counts.cases, expected.cases);
}

TEST(RsaVectors, SignaturesAreRawPublishedNumbers) {
  CheckRawOperations(MIROLTA_VECTORS "/rsa.txt", {30, 15, 756});
}

TEST(RsaVectors, PaddedMessagesAreRawPublishedNumbers) {
  CheckRawOperations(MIROLTA_VECTORS "/rsa_padded.txt", {161, 45, 437});
}

TEST(RsaVectors, VerifiedSignaturesAreEncodings) {
  CheckRawOperations(MIROLTA_VECTORS "/rsa_public.txt", {7, 0, 31});
}

}  // namespace
}  // namespace mirolta::test
