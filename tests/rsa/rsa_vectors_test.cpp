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

TEST(RsaVectors, RawOperationsGivePublishedNumbers) {
  RsaKey key;
  size_t keys = 0, with_primes = 0, cases = 0;
  bool is_first = false;
  CheckVectorFile(MIROLTA_VECTORS "/rsa.txt",
                  {"Modulus", "Public", "Secret", "P", "Q", "Encoded", "Signature"},
                  [&](const VectorCase& one) {
                    if (one.Has("Modulus")) {
                      const bool has_primes = one.Has("P");
                      key = KeyOf(Field(one, "Modulus"), Field(one, "Public"),
                                  has_primes ? Field(one, "P") : BigInt(0),
                                  has_primes ? Field(one, "Q") : BigInt(0), Field(one, "Secret"));
                      ++keys;
                      with_primes += has_primes;
                      is_first = true;
                      return;
                    }
                    ++cases;
                    const std::string& encoded = one.Text("Encoded");
                    const std::string& signature = one.Text("Signature");
                    BigInt result;
                    ASSERT_EQ(RsaEncrypt(result, key, FromHex(signature)), S_OK);
                    EXPECT_EQ(Hex(result), encoded);
                    if (!is_first && one.Text("Encoded").size() > kAllSecretDigits) return;
                    is_first = false;
                    ASSERT_EQ(RsaDecrypt(result, key, FromHex(encoded)), S_OK);
                    EXPECT_EQ(Hex(result), signature);
                    if (key.p.IsZero()) return;
                    ASSERT_EQ(RsaDecryptWithPrimes(result, key, FromHex(encoded)), S_OK);
                    EXPECT_EQ(Hex(result), signature);
                  });
  EXPECT_EQ(keys, 30u);
  EXPECT_EQ(with_primes, 15u);
  EXPECT_EQ(cases, 756u);
}

}  // namespace
}  // namespace mirolta::test
