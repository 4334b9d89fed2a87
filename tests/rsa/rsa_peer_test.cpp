// RSA operations against OpenSSL, with keys of either side.
#include "rsa_testing.h"

namespace mirolta::test {
namespace {

// The ends of the range of messages and some within.
std::vector<Bn> Messages(const Bn& n) {
  std::vector<Bn> messages = {Bn(0ul), Bn(1), Bn(2), Less1(n)};
  for (int i = 0; i < 4; ++i) {
    Bn message;
    BN_rand_range(message, n);
    messages.push_back(message);
  }
  return messages;
}

void ExpectSameAsPeer(RsaKey key) {
  const Bn n(key.n), e(key.e), d(key.d);
  for (const Bn& message : Messages(n)) {
    const Bn encrypted = Power(message, e, n);
    BigInt r;
    ASSERT_EQ(RsaEncrypt(r, key, message.Here()), S_OK);
    EXPECT_EQ(Hex(r), Hex(encrypted.Here()));
    EXPECT_EQ(BN_cmp(Power(Bn(r), d, n), message), 0);
    ASSERT_EQ(RsaDecrypt(r, key, encrypted.Here()), S_OK);
    EXPECT_EQ(Hex(r), Hex(message.Here()));
    ASSERT_EQ(RsaDecryptWithPrimes(r, key, encrypted.Here()), S_OK);
    EXPECT_EQ(Hex(r), Hex(message.Here()));
  }
}

class RsaPeerTest : public PlannedTest, public testing::WithParamInterface<int> {};

TEST_P(RsaPeerTest, AgreesOnKeysMadeHere) {
  RsaKey key;
  ASSERT_EQ(BuildRandomKey(key, GetParam() / 8, true), S_OK);
  ASSERT_EQ(key.n.BitLength(), static_cast<unsigned>(GetParam()));
  ExpectKeyHolds(key);
  ExpectSameAsPeer(key);
}

TEST_P(RsaPeerTest, AgreesOnKeysOfThePeer) {
  Bn p, q, d;
  const Bn e(65537);
  for (;;) {
    BN_generate_prime_ex(p, GetParam() / 2, 0, nullptr, nullptr, nullptr);
    BN_generate_prime_ex(q, GetParam() / 2, 0, nullptr, nullptr, nullptr);
    if (BN_cmp(p, q) > 0) BN_swap(p, q);
    const Bn order = Times(Less1(p), Less1(q));
    if (BN_cmp(p, q) != 0 && BN_mod_inverse(d, e, order, Context()) != nullptr) break;
  }
  ExpectSameAsPeer(KeyOf(Times(p, q).Here(), e.Here(), p.Here(), q.Here(), d.Here()));
}

INSTANTIATE_TEST_SUITE_P(Bits, RsaPeerTest,
                         testing::Values(64, 96, 128, 256, 384, 512, 768, 1024, 1536, 2048));

}  // namespace
}  // namespace mirolta::test
