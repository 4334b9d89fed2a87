// Random keys: which numbers are drawn, and the sizes that come of them.
#include "rsa_testing.h"

namespace mirolta::test {
namespace {

using RsaRandomKeyTest = PlannedTest;

constexpr bool kExact = true;

// Expects the key that these two starting values make.
void ExpectKeyFrom(const RsaKey& key, const char* first, const char* second) {
  RsaKey expected;
  ASSERT_EQ(BuildKey(expected, FromHex(first), FromHex(second)), S_OK);
  EXPECT_EQ(TextOf(key), TextOf(expected));
}

TEST_F(RsaRandomKeyTest, StartsFromTwoDrawnHalves) {
  PlannedSource::Restart({0x1C0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 4});
  RsaKey key;
  ASSERT_EQ(BuildRandomKey(key, 16, kExact), S_OK);
  EXPECT_EQ(PlannedSource::draws, (std::vector<int>{8, 8}));
  ExpectKeyFrom(key, "c000000000000003", "c000000000000005");
}

TEST_F(RsaRandomKeyTest, SeedsEachDrawWithTheClock) {
  RsaKey key;
  ASSERT_EQ(BuildRandomKey(key, 8, kExact), S_OK);
  // The counter is read once at first, once when it has moved, and once for the seed.
  const uint32_t date = (uint32_t{5} << 4 | 14) << 8 | 2006;
  ASSERT_EQ(PlannedSource::seeds.size(), 2u);
  EXPECT_EQ(PlannedSource::seeds[0], date << 16 | 3);
  EXPECT_EQ(PlannedSource::seeds[1], date << 16 | 6);
}

TEST_F(RsaRandomKeyTest, EqualHalvesAreDrawnAgain) {
  PlannedSource::Restart({0xC1, 2, 3, 5, 0xC1, 2, 3, 5, 0x01, 2, 3, 4, 0xD1, 2, 3, 5});
  RsaKey key;
  ASSERT_EQ(BuildRandomKey(key, 9, kExact), S_OK);
  // The second equals the first at once, the third once its size and oddness are ensured.
  EXPECT_EQ(PlannedSource::draws, (std::vector<int>{4, 4, 4, 4}));
  ExpectKeyFrom(key, "c1020305", "d1020305");
}

TEST_F(RsaRandomKeyTest, TheSecondHalfIsAByteLongerIfTheSizeNeedNotBeExact) {
  for (const LONG size : {8, 9}) {
    PlannedSource::Restart({1, 2, 3, 4, 1, 2, 3, 4, 5});
    RsaKey key;
    ASSERT_EQ(BuildRandomKey(key, size, !kExact), S_OK);
    EXPECT_EQ(PlannedSource::draws, (std::vector<int>{4, 5}));
    ExpectKeyFrom(key, "c1020305", "c102030405");
  }
}

TEST_F(RsaRandomKeyTest, OfOneByteTheFirstHalfIsZero) {
  RsaKey key = NoKey();
  EXPECT_EQ(BuildRandomKey(key, 1, kExact), E_INVALIDARG);
  EXPECT_EQ(TextOf(key), TextOf(NoKey()));
  EXPECT_TRUE(PlannedSource::seeds.empty());

  key.Reset();
  ASSERT_EQ(BuildRandomKey(key, 1, !kExact), S_OK);
  EXPECT_EQ(PlannedSource::draws, (std::vector<int>{1}));
  // Starting from 0 and from one byte, both primes are the first that the search finds.
  EXPECT_EQ(Hex(key.n), Hex(BigInt(1229 * 1229)));
  ExpectKeyHolds(key);
}

TEST_F(RsaRandomKeyTest, SizesBelowOneAreRefused) {
  for (const LONG size : {0, -1, -2, -2147483647 - 1}) {
    for (const bool exact : {false, true}) {
      RsaKey key = NoKey();
      EXPECT_EQ(BuildRandomKey(key, size, exact), E_INVALIDARG);
      EXPECT_EQ(TextOf(key), TextOf(NoKey()));
    }
  }
  EXPECT_TRUE(PlannedSource::seeds.empty());
}

TEST_F(RsaRandomKeyTest, AFailureToSeedLeavesTheKey) {
  for (int given = 0; given < 2; ++given) {
    for (const bool exact : {false, true}) {
      PlannedSource::Restart({});
      PlannedSource::seeds_to_give = given;
      RsaKey key = NoKey();
      EXPECT_EQ(BuildRandomKey(key, 16, exact), E_FAIL);
      EXPECT_EQ(TextOf(key), TextOf(NoKey()));
    }
  }
}

TEST_F(RsaRandomKeyTest, APublicExponentThatIsSetIsUsed) {
  RsaKey key;
  key.e = BigInt(2);
  ASSERT_EQ(BuildRandomKey(key, 16, kExact), S_OK);
  EXPECT_TRUE(key.e.IsOdd());
  EXPECT_TRUE(key.e < BigInt(100));
  ExpectKeyHolds(key);
  const std::string kept = Hex(key.e);
  const std::string n = Hex(key.n);
  ASSERT_EQ(BuildRandomKey(key, 16, kExact), S_OK);
  EXPECT_NE(Hex(key.n), n);
  ExpectKeyHolds(key);
}

// 3 and 2 are too small: the search finds nothing below 1229, whatever the size.
TEST_F(RsaRandomKeyTest, SizesOfTwoAndThreeGiveTheSmallestPrimes) {
  for (const LONG size : {2, 3}) {
    RsaKey key;
    ASSERT_EQ(BuildRandomKey(key, size, kExact), S_OK);
    EXPECT_EQ(Hex(key.n), Hex(BigInt(1229 * 1229)));
    ExpectKeyHolds(key);
  }
}

TEST_F(RsaRandomKeyTest, ExactSizesGiveModuliOfThatSize) {
  for (LONG size = 4; size <= 64; ++size) {
    for (int i = 0; i < 8; ++i) {
      RsaKey key;
      ASSERT_EQ(BuildRandomKey(key, size, kExact), S_OK);
      EXPECT_EQ(key.n.BitLength(), 16u * static_cast<unsigned>(size / 2)) << size;
      ExpectKeyHolds(key);
    }
  }
}

TEST_F(RsaRandomKeyTest, OtherSizesGiveModuliOfAByteMore) {
  for (LONG size = 4; size <= 48; ++size) {
    for (int i = 0; i < 4; ++i) {
      RsaKey key;
      ASSERT_EQ(BuildRandomKey(key, size, !kExact), S_OK);
      EXPECT_EQ(key.n.BitLength(), 16u * static_cast<unsigned>(size / 2) + 8) << size;
      ExpectKeyHolds(key);
    }
  }
}

TEST_F(RsaRandomKeyTest, TheSourceAndClockOfTheSystemGiveNewKeysEachTime) {
  SetRandomSource(nullptr);
  MiroltaSetClock(nullptr);
  std::vector<std::string> seen;
  for (int i = 0; i < 20; ++i) {
    RsaKey key;
    ASSERT_EQ(BuildRandomKey(key, 32, kExact), S_OK);
    EXPECT_EQ(key.n.BitLength(), 256u);
    ExpectKeyHolds(key);
    for (const std::string& old : seen) EXPECT_NE(Hex(key.n), old);
    seen.push_back(Hex(key.n));
  }
}

}  // namespace
}  // namespace mirolta::test
