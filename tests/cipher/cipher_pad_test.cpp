#include "cipher_pad.h"

#include <gtest/gtest.h>

#include "cipher_testing.h"

namespace mirolta::test {
namespace {

// A generator that records its seeds and counts up from 0x0FE, so that bytes wrap.
std::vector<uint32_t> seeds;
uint32_t next_number;
bool seed_works;

bool RecordSeed(uint32_t seed) {
  seeds.push_back(seed);
  next_number = 0x0FE;
  return seed_works;
}
uint32_t NextNumber() {
  return next_number++;
}
constexpr RandomSource kRecorder = {RecordSeed, NextNumber};

class CipherPad : public testing::Test {
 protected:
  void SetUp() override {
    seeds.clear();
    seed_works = true;
    SetRandomSource(&kRecorder);
  }
  void TearDown() override { SetRandomSource(nullptr); }
};

TEST_F(CipherPad, RepeatsTheLowByteOfThePadType) {
  const struct {
    LONG pad_type;
    uint8_t byte;
  } kRows[] = {
      {0, 0}, {4, 4}, {255, 255}, {256, 0}, {0x141, 0x41}, {0x7FFFFFFF, 0xFF}, {0x7FFFFF00, 0x00}};
  for (const auto& row : kRows) {
    for (uint32_t count = 1; count <= 16; ++count) {
      Bytes pad(17, 0xCC);
      EXPECT_TRUE(MakePad(row.pad_type, pad.data(), count));
      EXPECT_EQ(Part(pad, 0, count), Bytes(count, row.byte)) << row.pad_type;
      EXPECT_EQ(Part(pad, count, 17 - count), Bytes(17 - count, 0xCC));
    }
  }
  EXPECT_TRUE(seeds.empty());
}

TEST_F(CipherPad, RandomPadsSeedOnceAndTakeNumbersModulo256) {
  Bytes pad(6, 0xCC);
  EXPECT_TRUE(MakePad(-1, pad.data(), 5));
  EXPECT_EQ(pad, (Bytes{0xFE, 0xFF, 0x00, 0x01, 0x02, 0xCC}));
  EXPECT_EQ(seeds.size(), 1u);
  EXPECT_TRUE(MakePad(kRandomPad, pad.data(), 1));
  EXPECT_EQ(seeds.size(), 2u);
}

TEST_F(CipherPad, SeedsWithTheClock) {
  // The clock may be read in two different milliseconds, so the dates are compared, and the low
  // half lies between two readings.
  const uint32_t before = ClockSeed();
  uint8_t pad = 0;
  EXPECT_TRUE(MakePad(-1, &pad, 1));
  const uint32_t after = ClockSeed();
  ASSERT_EQ(seeds.size(), 1u);
  EXPECT_TRUE(seeds[0] >> 16 == before >> 16 || seeds[0] >> 16 == after >> 16);
  EXPECT_LE((seeds[0] - before) & 0xFFFF, (after - before) & 0xFFFF);
}

TEST_F(CipherPad, RefusesOtherNegativePadTypesWhereBytesAreNeeded) {
  for (LONG pad_type : {-2, -3, -256, INT32_MIN}) {
    uint8_t pad = 0xCC;
    EXPECT_FALSE(MakePad(pad_type, &pad, 1)) << pad_type;
    EXPECT_EQ(pad, 0xCC);
    EXPECT_TRUE(MakePad(pad_type, &pad, 0)) << pad_type;
  }
  EXPECT_TRUE(MakePad(-1, nullptr, 0));
  EXPECT_TRUE(seeds.empty());
}

TEST_F(CipherPad, FailsWhereSeedingFails) {
  seed_works = false;
  uint8_t pad = 0xCC;
  EXPECT_FALSE(MakePad(-1, &pad, 1));
  EXPECT_EQ(pad, 0xCC);
  EXPECT_TRUE(MakePad(7, &pad, 1));
  EXPECT_EQ(pad, 7);
}

// The pad that EncryptFinal adds to data, seen by decrypting.
Bytes PadOf(LONG algorithm, LONG pad_type, const Bytes& data) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(algorithm, Bytes(16, 0x11));
  engine->SetPadType(pad_type);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(Decrypt(*engine, TakeAll(engine->EncryptOut())), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
  const Bytes padded = TakeAll(engine->DecryptOut());
  EXPECT_GE(padded.size(), data.size());
  EXPECT_EQ(Part(padded, 0, data.size()), data);
  return Part(padded, data.size(), padded.size() - data.size());
}

TEST_F(CipherPad, FillsTheLastBlockOfAnEngine) {
  for (LONG algorithm : {kCipherAes, kCipherDes}) {
    const uint32_t block_size = algorithm == kCipherAes ? 16 : 8;
    for (uint32_t length = 0; length <= 3 * block_size; ++length) {
      const uint32_t missing = (block_size - length % block_size) % block_size;
      const Bytes data(length, 0x77);
      EXPECT_EQ(PadOf(algorithm, 0, data), Bytes(missing, 0));
      EXPECT_EQ(PadOf(algorithm, 4, data), Bytes(missing, 4));
      EXPECT_EQ(PadOf(algorithm, 0x141, data), Bytes(missing, 0x41));
      EXPECT_EQ(PadOf(algorithm, 256, data), Bytes(missing, 0));
    }
    EXPECT_TRUE(seeds.empty());
    EXPECT_EQ(PadOf(algorithm, -1, Bytes(block_size - 3, 1)), (Bytes{0xFE, 0xFF, 0x00}));
    EXPECT_EQ(seeds.size(), 1u);
    EXPECT_EQ(PadOf(algorithm, -1, Bytes(block_size, 1)), Bytes());
    EXPECT_EQ(seeds.size(), 1u);
    seeds.clear();
  }
}

TEST_F(CipherPad, RefusedPadsFailTheFinalAndLeaveTheRestQueued) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 0x11));
  const Bytes data(20, 0x77);
  ASSERT_EQ(Encrypt(*engine, data), S_OK);
  engine->SetPadType(-2);
  EXPECT_EQ(engine->EncryptFinal(), E_OUTOFMEMORY);
  EXPECT_EQ(Content(engine->EncryptIn()), Part(data, 16, 4));
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
  seed_works = false;
  engine->SetPadType(-1);
  EXPECT_EQ(engine->EncryptFinal(), E_OUTOFMEMORY);
  EXPECT_EQ(Content(engine->EncryptIn()), Part(data, 16, 4));
  // A setting that works finishes the same block.
  engine->SetPadType(0);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 32u);
  // Nothing waits, so no pad is asked for.
  engine->SetPadType(-2);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 32u);
}

TEST(CipherPadSystem, RandomPadsOfTheSystemDiffer) {
  Bytes first(16), second(16);
  EXPECT_TRUE(MakePad(-1, first.data(), 16));
  EXPECT_TRUE(MakePad(-1, second.data(), 16));
  EXPECT_NE(first, second);
}

}  // namespace
}  // namespace mirolta::test
