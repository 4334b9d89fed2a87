#include "big_random.h"

#include <gtest/gtest.h>

#include "big_testing.h"

namespace mirolta {
namespace {

// A source that counts its seeds and gives the numbers of a known sequence.
int seeds = 0;
uint32_t last_seed = 0;
uint32_t next_value = 0;
bool seed_succeeds = true;
bool CountSeed(uint32_t seed) {
  ++seeds;
  last_seed = seed;
  return seed_succeeds;
}
uint32_t NextValue() {
  return next_value += 0x101;
}
uint32_t NextZero() {
  return 0x7FFFFF00;
}

class BigRandomTest : public ::testing::Test {
 protected:
  void SetUp() override {
    seeds = 0;
    next_value = 0;
    seed_succeeds = true;
    SetRandomSource(&counting_);
  }
  void TearDown() override { SetRandomSource(nullptr); }
  const RandomSource counting_ = {CountSeed, NextValue};
  const RandomSource zeros_ = {CountSeed, NextZero};
};

TEST_F(BigRandomTest, BytesAreTheDrawnNumbersModulo256) {
  BigInt n;
  ASSERT_EQ(Random(n, 5, false, false), S_OK);
  EXPECT_EQ(Hex(n), "102030405");
  EXPECT_EQ(seeds, 1);
  ASSERT_EQ(Random(n, 1, false, false), S_OK);
  EXPECT_EQ(Hex(n), "6");
  EXPECT_EQ(seeds, 2);
}

TEST_F(BigRandomTest, EnsuredSizeAndOddnessSetTheirBits) {
  SetRandomSource(&zeros_);
  BigInt n(5);
  ASSERT_EQ(Random(n, 4, false, false), S_OK);
  EXPECT_EQ(Hex(n), "0");
  ASSERT_EQ(Random(n, 4, true, false), S_OK);
  EXPECT_EQ(Hex(n), "c0000000");
  ASSERT_EQ(Random(n, 4, false, true), S_OK);
  EXPECT_EQ(Hex(n), "1");
  ASSERT_EQ(Random(n, 4, true, true), S_OK);
  EXPECT_EQ(Hex(n), "c0000001");
  ASSERT_EQ(Random(n, 1, true, true), S_OK);
  EXPECT_EQ(Hex(n), "c1");
}

TEST_F(BigRandomTest, SizesBelowOneAreRefused) {
  BigInt n(5);
  for (const LONG size : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(Random(n, size, true, true), E_INVALIDARG);
  }
  EXPECT_EQ(Hex(n), "5");
  EXPECT_EQ(seeds, 0);
}

TEST_F(BigRandomTest, AFailureToSeedLeavesTheNumber) {
  seed_succeeds = false;
  BigInt n(5);
  EXPECT_EQ(Random(n, 4, true, true), E_FAIL);
  EXPECT_EQ(Hex(n), "5");
}

TEST_F(BigRandomTest, TheSignFlagIsKept) {
  BigInt n = BigInt(1) - BigInt(2);
  ASSERT_EQ(Random(n, 2, false, false), S_OK);
  EXPECT_EQ(Hex(n), "-102");
}

TEST_F(BigRandomTest, TheSourceOfTheSystemGivesNewNumbersEachTime) {
  SetRandomSource(nullptr);
  BigInt previous;
  for (int i = 0; i < 5; ++i) {
    BigInt n;
    ASSERT_EQ(Random(n, 4, true, true), S_OK);
    EXPECT_GE(n.GetWord(0), 0xC0000001u);
    EXPECT_TRUE(n.IsOdd());
    BigInt large;
    ASSERT_EQ(Random(large, 64, true, false), S_OK);
    EXPECT_EQ(large.BitLength(), 512u);
    EXPECT_FALSE(large == previous);
    EXPECT_EQ((large * large).BitLength(), 1024u);
    previous = large;
  }
}

}  // namespace
}  // namespace mirolta
