// RSA keys of mirolta.hpp.
#include <gtest/gtest.h>

#include <mirolta.hpp>

#include "hpp_testing.h"

namespace {

using mirolta::Number;
using mirolta::Rsa;
using mirolta::RsaKey;

TEST(HppRsaTest, MakesAKeyOfTwoPrimes) {
  const Rsa rsa = Rsa::FromPrimes(2000003, 1000003);
  const RsaKey key = rsa.Key();
  EXPECT_EQ(key.p, 1000003);
  EXPECT_EQ(key.q, 2000003);
  EXPECT_EQ(key.modulus.ToText(), "2000009000009");
  EXPECT_EQ(key.public_exponent, 65537);
  EXPECT_EQ(key.secret_exponent.ToText(), "353023016129");
  const Number data = Number::ParseHex("c0ffee");
  const Number encrypted = rsa.Encrypt(data);
  EXPECT_EQ(encrypted, data.PowerMod(65537, key.modulus));
  EXPECT_EQ(rsa.Decrypt(encrypted), data);
  EXPECT_EQ(rsa.DecryptByPrimes(encrypted), data);
  EXPECT_EQ(rsa.BlockSize(), 5u);
  EXPECT_EQ(Rsa::FromPrimes(1000000, 2000000).Key().modulus, key.modulus);
  EXPECT_EQ(Rsa::FromPrimes(1000003, 2000003, 17).Key().public_exponent, 17);
}

TEST(HppRsaTest, GeneratesKeysOfExactSize) {
  const Rsa rsa = Rsa::Generate(64);
  const RsaKey key = rsa.Key();
  EXPECT_EQ(key.modulus.BitLength(), 512u);
  EXPECT_EQ(key.p * key.q, key.modulus);
  EXPECT_LT(key.p, key.q);
  EXPECT_EQ(key.public_exponent * key.secret_exponent % ((key.p - 1) * (key.q - 1)), 1);
  EXPECT_EQ(rsa.BlockSize(), 63u);
  const Number data = key.modulus - 1;
  EXPECT_EQ(rsa.Decrypt(rsa.Encrypt(data)), data);
  EXPECT_EQ(Rsa::Generate(32, 3).Key().public_exponent % 2, 1);
}

TEST(HppRsaTest, CopiesAKeyByItsNumbers) {
  const Rsa rsa = Rsa::FromPrimes(1000003, 2000003);
  const Rsa copy(rsa.Key());
  EXPECT_EQ(copy.Decrypt(rsa.Encrypt(12345)), 12345);
  EXPECT_EQ(copy.DecryptByPrimes(rsa.Encrypt(12345)), 12345);
  const RsaKey public_key = rsa.PublicKey();
  EXPECT_TRUE(public_key.secret_exponent.IsZero());
  EXPECT_TRUE(public_key.p.IsZero());
  const Rsa sender(public_key);
  EXPECT_EQ(rsa.Decrypt(sender.Encrypt(12345)), 12345);
  EXPECT_EQ(sender.TryDecryptByPrimes(5).Failure().Number(), hpp_testing::kKeyNotSet);
}

TEST(HppRsaTest, FailuresAreErrors) {
  const Rsa rsa = Rsa::FromPrimes(1000003, 2000003);
  const auto much = rsa.TryEncrypt(rsa.Key().modulus);
  ASSERT_FALSE(much);
  EXPECT_EQ(much.Failure().Number(), hpp_testing::kTooMuchData);
  EXPECT_EQ(much.Failure().Description(), "Too much data.");
  EXPECT_EQ(rsa.TryEncrypt(-1).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(rsa.TryDecrypt(-1).Failure().Number(), E_INVALIDARG);
  EXPECT_TRUE(rsa.Encrypt(0).IsZero());
  const Rsa none((RsaKey()));
  EXPECT_EQ(none.TryEncrypt(1).Failure().Description(), "Key not set.");
  EXPECT_EQ(none.BlockSize(), 0u);
  EXPECT_EQ(Rsa::TryGenerate(0).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Rsa::TryGenerate(1).Failure().Number(), E_INVALIDARG);
  if (sizeof(std::size_t) > 4) {
    EXPECT_EQ(Rsa::TryGenerate(static_cast<std::size_t>(0x80000000u)).Failure().Number(),
              E_OUTOFMEMORY);
  }
  EXPECT_EQ(Rsa::TryFromPrimes(-3, 5).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Rsa::TryFromPrimes(3, -5).Failure().Number(), E_INVALIDARG);
  for (Number RsaKey::*const number : {&RsaKey::modulus, &RsaKey::public_exponent,
                                       &RsaKey::secret_exponent, &RsaKey::p, &RsaKey::q}) {
    RsaKey key;
    key.*number = -1;
    EXPECT_EQ(Rsa::TryCreate(key).Failure().Number(), E_INVALIDARG);
  }
}

TEST(HppRsaTest, MovesAndHasNothingThen) {
  static_assert(!std::is_copy_constructible_v<Rsa>);
  Rsa rsa = Rsa::FromPrimes(1000003, 2000003);
  const Rsa moved = std::move(rsa);
  EXPECT_EQ(moved.Decrypt(moved.Encrypt(5)), 5);
  EXPECT_EQ(rsa.TryEncrypt(5).Failure().Number(), E_POINTER);
  EXPECT_EQ(rsa.TryKey().Failure().Number(), E_POINTER);
  LONG size = 0;
  EXPECT_EQ(moved.Interface()->get_BlockSize(&size), S_OK);
}

}  // namespace
