// Ciphers of mirolta.hpp.
#include <gtest/gtest.h>

#include <mirolta.hpp>

#include "hpp_testing.h"

namespace {

using mirolta::Bytes;
using mirolta::ByteSpan;
using mirolta::Cipher;
using mirolta::FromHex;
using mirolta::Pad;
using mirolta::ToHex;

TEST(HppCipherTest, EncryptsAndDecryptsPublishedExamples) {
  mirolta::Aes aes(FromHex("000102030405060708090a0b0c0d0e0f"));
  const Bytes plain = FromHex("00112233445566778899aabbccddeeff");
  EXPECT_EQ(ToHex(aes.Encrypt(plain)), "69c4e0d86a7b0430d8cdb78070b4c55a");
  EXPECT_EQ(aes.Decrypt(FromHex("69c4e0d86a7b0430d8cdb78070b4c55a")), plain);
  EXPECT_EQ(aes.BlockSize(), 16u);
  mirolta::Des des(FromHex("0123456789abcdef"));
  EXPECT_EQ(ToHex(des.Encrypt("Now is the time for all ")),
            "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53");
  EXPECT_EQ(des.BlockSize(), 8u);
}

TEST(HppCipherTest, PadsTheLastBlockAndKeepsThePad) {
  const Bytes key = FromHex("000102030405060708090a0b0c0d0e0f");
  mirolta::Aes zeros(key);
  EXPECT_EQ(ToHex(zeros.Decrypt(zeros.Encrypt("abc"))), "61626300000000000000000000000000");
  mirolta::Aes chosen(key, Pad(0x2E));
  EXPECT_EQ(ToHex(chosen.Decrypt(chosen.Encrypt("abc"))), "6162632e2e2e2e2e2e2e2e2e2e2e2e2e");
  chosen.SetPad(Pad::Random());
  const Bytes first = chosen.Encrypt("abc");
  const Bytes second = chosen.Encrypt("abc");
  EXPECT_NE(first, second);
  EXPECT_EQ(ToHex(ByteSpan(chosen.Decrypt(first)).First(3)), "616263");
  EXPECT_TRUE(chosen.Encrypt({}).empty());
}

TEST(HppCipherTest, TakesPieces) {
  mirolta::Des des(FromHex("0123456789abcdef"));
  std::string pieces = ToHex(des.EncryptPart("Now is"));
  EXPECT_EQ(pieces, "");
  pieces += ToHex(des.EncryptPart(" the time for"));
  EXPECT_EQ(pieces.size(), 32u);
  // Decryption has its own partial block.
  EXPECT_TRUE(des.DecryptPart(FromHex("3fa40e8a")).empty());
  pieces += ToHex(des.Encrypt(" all "));
  EXPECT_EQ(pieces, "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53");
  EXPECT_EQ(des.Decrypt(FromHex("984d4815")), Bytes("Now is t"));
}

TEST(HppCipherTest, ResetDiscardsPendingData) {
  mirolta::Aes aes("sixteen byte key");
  EXPECT_TRUE(aes.EncryptPart("pending").empty());
  aes.Reset();
  EXPECT_EQ(aes.Decrypt(aes.Encrypt("0123456789abcdef")), Bytes("0123456789abcdef"));
}

TEST(HppCipherTest, TakesMoreThanTheClassDoesAtOnce) {
  std::vector<std::uint8_t> plain((std::size_t{5} << 19) + 3);
  for (std::size_t i = 0; i < plain.size(); ++i) plain[i] = static_cast<std::uint8_t>(i * i >> 8);
  mirolta::Aes aes("sixteen byte key", Pad(7));
  const Bytes whole = aes.Encrypt(plain);
  ASSERT_EQ(whole.size(), plain.size() + 13);
  // The same in one part that is larger than the limit and one that is not, a partial block between.
  const Bytes head = aes.EncryptPart(ByteSpan(plain).First(plain.size() - 9));
  const Bytes tail = aes.Encrypt(ByteSpan(plain).From(plain.size() - 9));
  EXPECT_EQ(head.size() + tail.size(), whole.size());
  EXPECT_TRUE(std::equal(head.begin(), head.end(), whole.begin()));
  EXPECT_TRUE(std::equal(tail.begin(), tail.end(), whole.begin() + head.size()));
  // And with a partial block before what is taken at once, which only the end may pad.
  EXPECT_TRUE(aes.EncryptPart(ByteSpan(plain).First(9)).empty());
  EXPECT_EQ(aes.Encrypt(ByteSpan(plain).From(9)), whole);
  const Bytes back = aes.Decrypt(whole);
  ASSERT_EQ(back.size(), whole.size());
  EXPECT_TRUE(std::equal(plain.begin(), plain.end(), back.begin()));
  // Nothing is left: a queued block would come first.
  EXPECT_EQ(aes.Decrypt(aes.Encrypt("0123456789abcdef")), Bytes("0123456789abcdef"));
}

TEST(HppCipherTest, KeysAreCheckedAndReplaced) {
  Cipher cipher("DES", FromHex("0123456789abcdef"));
  EXPECT_EQ(ToHex(cipher.Key()), "0123456789abcdef");
  EXPECT_EQ(cipher.TrySetKey("short").Failure().Number(), E_INVALIDARG);
  EXPECT_TRUE(cipher.Key().empty());
  EXPECT_EQ(cipher.TryEncrypt("x").Failure().Number(), hpp_testing::kNotInitialized);
  EXPECT_EQ(cipher.TryDecrypt("x").Failure().Description(), "Not initialized.");
  cipher.SetKey("0123456789abcdef");  // triple DES
  EXPECT_EQ(cipher.Encrypt("x").size(), 8u);
  cipher.ClearKey();
  EXPECT_EQ(cipher.TryEncryptPart("x").Failure().Number(), hpp_testing::kNotInitialized);
  EXPECT_EQ(cipher.TryDecryptPart("x").Failure().Number(), hpp_testing::kNotInitialized);
}

TEST(HppCipherTest, FailuresAreErrors) {
  EXPECT_EQ(Cipher::TryCreate("aes", "sixteen byte key").Failure().Number(),
            hpp_testing::kAlgorithmNotFound);
  EXPECT_EQ(Cipher::TryCreate("AES", "short").Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(hpp_testing::ThrownBy([] { mirolta::Aes aes(""); }), E_INVALIDARG);
  EXPECT_EQ(hpp_testing::ThrownBy([] { mirolta::Des des("seven b"); }), E_INVALIDARG);
}

TEST(HppCipherTest, MovesAndHasNothingThen) {
  static_assert(!std::is_copy_constructible_v<Cipher>);
  mirolta::Aes aes("sixteen byte key");
  EXPECT_TRUE(aes.EncryptPart("01234567").empty());
  Cipher moved = std::move(aes);
  EXPECT_EQ(moved.Encrypt("89abcdef").size(), 16u);
  EXPECT_EQ(aes.TryEncrypt("x").Failure().Number(), E_POINTER);
  EXPECT_EQ(aes.TryReset().Failure().Number(), E_POINTER);
  EXPECT_TRUE(moved.Interface());
}

}  // namespace
