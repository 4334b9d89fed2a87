// Digests and HMACs of mirolta.hpp.
#include <gtest/gtest.h>

#include <mirolta.hpp>

#include "hpp_testing.h"

namespace {

using mirolta::Bytes;
using mirolta::Hash;
using mirolta::ToHex;

constexpr const char* kMd5OfAbc = "900150983cd24fb0d6963f7d28e17f72";
constexpr const char* kSha1OfAbc = "a9993e364706816aba3e25717850c26c9cd0d89d";
constexpr const char* kSha256OfAbc =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* kSha256OfNothing =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

TEST(HppHashTest, ANameGivesAnArray) {
  auto hash = mirolta::Hash("SHA256");
  hash.Update("abc");
  std::array digest = hash.Finish();
  static_assert(std::is_same_v<decltype(digest), std::array<std::uint8_t, 32>>);
  EXPECT_EQ(ToHex(digest), kSha256OfAbc);
  std::array sha1 = mirolta::Hash("SHA1").Update("abc").Finish();
  EXPECT_EQ(ToHex(sha1), kSha1OfAbc);
  std::array md5 = mirolta::Hash("MD5").Update("abc").Finish();
  EXPECT_EQ(ToHex(md5), kMd5OfAbc);
  std::array mac = mirolta::Hash("MD5", "Jefe").Update("what do ya want for nothing?").Finish();
  EXPECT_EQ(ToHex(mac), "750c783e6ab0b503eaa86e310a5db738");
}

TEST(HppHashTest, ANameThatIsNotALiteralGivesBytes) {
  const std::string name = "SHA1";
  mirolta::Hash hash(name);
  static_assert(std::is_same_v<decltype(hash), Hash<>>);
  hash.Update("abc");
  const std::array<std::uint8_t, 20> digest = hash.Finish();
  EXPECT_EQ(ToHex(digest), kSha1OfAbc);
  char buffer[7] = "MD5";
  mirolta::Hash buffered(buffer);
  static_assert(std::is_same_v<decltype(buffered), Hash<>>);
  EXPECT_EQ(buffered.DigestSize(), 16u);
  mirolta::Hash keyed(buffer, "key");
  static_assert(std::is_same_v<decltype(keyed), Hash<>>);
  mirolta::Hash pointed(name.c_str(), std::string("key"));
  EXPECT_EQ(pointed.Key(), Bytes("key"));
}

TEST(HppHashTest, TypesNameTheAlgorithms) {
  EXPECT_EQ(ToHex(mirolta::Md5().Update("abc").Finish()), kMd5OfAbc);
  EXPECT_EQ(ToHex(mirolta::Sha1().Update("abc").Finish()), kSha1OfAbc);
  std::array digest = mirolta::Sha256().Update("abc").Finish();
  EXPECT_EQ(ToHex(digest), kSha256OfAbc);
  EXPECT_EQ(mirolta::Sha256("Jefe").Update("what do ya want for nothing?").FinishHex(),
            "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
  EXPECT_EQ(mirolta::Sha1("Jefe").Update("what do ya want for nothing?").FinishHex(),
            "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79");
  EXPECT_EQ(mirolta::Md5("Jefe").Update("what do ya want for nothing?").FinishHex(),
            "750c783e6ab0b503eaa86e310a5db738");
}

TEST(HppHashTest, HasTheSizesOfTheAlgorithm) {
  EXPECT_EQ(mirolta::Md5().DigestSize(), 16u);
  EXPECT_EQ(mirolta::Sha1().DigestSize(), 20u);
  EXPECT_EQ(mirolta::Sha256().DigestSize(), 32u);
  EXPECT_EQ(mirolta::Sha256().BlockSize(), 64u);
}

TEST(HppHashTest, PiecesMakeOneMessageAndFinishBeginsTheNext) {
  mirolta::Sha256 hash;
  EXPECT_EQ(hash.FinishHex(), kSha256OfNothing);
  hash.Update("a").Update("").Update("bc");
  EXPECT_EQ(hash.FinishHex(), kSha256OfAbc);
  EXPECT_EQ(hash.FinishHex(), kSha256OfNothing);
  hash.Update("x");
  hash.Reset();
  hash.Update("abc");
  EXPECT_EQ(hash.FinishHex(), kSha256OfAbc);
}

TEST(HppHashTest, FinishesIntoMemoryOfTheCaller) {
  mirolta::Sha1 hash;
  hash.Update("abc");
  std::vector<std::uint8_t> shorter(19, 7);
  const auto refused = hash.TryFinishInto(shorter);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Failure().Number(), DISP_E_BADINDEX);
  EXPECT_EQ(shorter, std::vector<std::uint8_t>(19, 7));
  std::vector<std::uint8_t> longer(22, 7);
  EXPECT_EQ(hash.FinishInto(longer), 20u);
  EXPECT_EQ(ToHex(longer), std::string(kSha1OfAbc) + "0707");
}

TEST(HppHashTest, KeysBeginAMessageAndStayUntilCleared) {
  mirolta::Md5 hash;
  EXPECT_TRUE(hash.Key().empty());
  hash.Update("lost");
  hash.SetKey("Jefe");
  EXPECT_EQ(hash.Key(), Bytes("Jefe"));
  for (int i = 0; i < 2; ++i) {
    hash.Update("what do ya want for nothing?");
    EXPECT_EQ(hash.FinishHex(), "750c783e6ab0b503eaa86e310a5db738");
  }
  hash.ClearKey();
  EXPECT_TRUE(hash.Key().empty());
  EXPECT_EQ(hash.Update("abc").FinishHex(), kMd5OfAbc);
}

TEST(HppHashTest, RefusesAnEmptyKey) {
  mirolta::Md5 hash;
  EXPECT_EQ(hash.TrySetKey({}).Failure().Number(), E_UNEXPECTED);
  EXPECT_EQ(hpp_testing::ThrownBy([] { mirolta::Sha1 keyed{mirolta::ByteSpan()}; }), E_UNEXPECTED);
}

TEST(HppHashTest, ConvertsTextsByCodePage) {
  mirolta::Md5 hash;
  EXPECT_EQ(hash.UpdateText("\xC3\xA9").FinishHex(), hash.Update("\xC3\xA9").FinishHex());
  EXPECT_EQ(hash.UpdateText(u"\u00E9", 1252).FinishHex(), hash.Update("\xE9").FinishHex());
  EXPECT_EQ(hash.UpdateText(u"ab", -1).FinishHex(),
            hash.Update(std::string_view("a\0b\0", 4)).FinishHex());
  EXPECT_EQ(hash.UpdateText(u"ab", -2).FinishHex(),
            hash.Update(std::string_view("\0a\0b", 4)).FinishHex());
}

TEST(HppHashTest, FailuresAreErrors) {
  const auto unknown = Hash<>::TryCreate("sha256");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.Failure().Number(), hpp_testing::kAlgorithmNotFound);
  EXPECT_EQ(unknown.Failure().Description(), "Algorithm not found.");
  // As long as the name of another algorithm.
  EXPECT_EQ(hpp_testing::ThrownBy([] { mirolta::Hash hash("SHA224"); }),
            hpp_testing::kAlgorithmNotFound);
  const auto size = Hash<32>::TryCreate("SHA1");
  ASSERT_FALSE(size);
  EXPECT_EQ(size.Failure().Number(), DISP_E_BADINDEX);
  EXPECT_STREQ(size.Failure().what(), "The digest has 20 bytes, not 32.");
  EXPECT_EQ(Hash<>::TryCreate("MD5", {}).Failure().Number(), E_UNEXPECTED);
}

TEST(HppHashTest, MovesAndHasNothingThen) {
  static_assert(!std::is_copy_constructible_v<Hash<>>);
  mirolta::Sha256 hash;
  hash.Update("ab");
  auto moved = std::move(hash);
  EXPECT_EQ(moved.Update("c").FinishHex(), kSha256OfAbc);
  EXPECT_EQ(hash.TryUpdate("x").Failure().Number(), E_POINTER);
  EXPECT_EQ(hash.TryFinish().Failure().Number(), E_POINTER);
  hash = std::move(moved);
  EXPECT_EQ(hash.Update("abc").FinishHex(), kSha256OfAbc);
  LONG size = 0;
  EXPECT_EQ(hash.Interface()->get_HashSize(&size), S_OK);
  EXPECT_EQ(size, 32);
}

}  // namespace
