#include "des_kernels.h"

#include <gtest/gtest.h>

#include <cstring>

#include "block_kernel_checks.h"
#include "cipher_vectors.h"
#include "des_schedule.h"
#include "seam/neon.h"

namespace mirolta::test {
namespace {

constexpr uint32_t kKeyLengths[] = {8, 16, 24};

DesSchedule Expanded(const Bytes& key) {
  DesSchedule schedule = {};
  EXPECT_TRUE(ExpandDesKey(key.data(), static_cast<uint32_t>(key.size()), &schedule));
  return schedule;
}

Bytes Encrypted(const Bytes& key, const Bytes& plaintext) {
  Bytes out(plaintext.size());
  DesEncryptPortable(Expanded(key), plaintext.data(), out.data(),
                     static_cast<uint32_t>(plaintext.size() / kDesBlockSize));
  return out;
}

TEST(DesKernels, TransformAsPublished) {
  ForEachDesVector([](const Bytes& key, const Bytes& plaintext, const Bytes& ciphertext) {
    const DesSchedule schedule = Expanded(key);
    ExpectTransforms(kDesEncryptKernels, schedule, kDesBlockSize, plaintext, ciphertext);
    ExpectTransforms(kDesDecryptKernels, schedule, kDesBlockSize, ciphertext, plaintext);
  });
}

TEST(DesKernels, AgreeWithThePortableOnes) {
  std::mt19937 random(2);
  for (const uint32_t length : kKeyLengths) {
    const DesSchedule schedule = Expanded(RandomBytes(random, length));
    ExpectKernelsAgree(kDesEncryptKernels, schedule, kDesBlockSize, random);
    ExpectKernelsAgree(kDesDecryptKernels, schedule, kDesBlockSize, random);
  }
}

TEST(DesKernels, TouchNothingBeforeOrBehindScheduleAndBlocks) {
  std::mt19937 random(4);
  for (const uint32_t length : {8u, 24u}) {
    const DesSchedule schedule = Expanded(RandomBytes(random, length));
    ExpectInsideBounds(kDesEncryptKernels, schedule, kDesBlockSize);
    ExpectInsideBounds(kDesDecryptKernels, schedule, kDesBlockSize);
  }
}

TEST(DesKernels, EndInAPortableOneAndTheFirstThatRunsIsChosen) {
  ExpectOrderedList(kDesEncryptKernels, "des-encrypt", CurrentKernel<kDesEncryptKernels>());
  ExpectOrderedList(kDesDecryptKernels, "des-decrypt", CurrentKernel<kDesDecryptKernels>());
}

TEST(DesKernels, NeedTheInstructionsThatTheyUse) {
  const std::vector<KernelKind> kinds = {
      {"-avx512", kFeatureAvx512 | kFeatureGfni | kFeatureBmi2Adx},
      {"-avx2", kFeatureAvx2},
      {"-sse2", kFeatureSse2},
      {"-gfni", kFeatureGfni | kFeatureBmi2Adx},
      {"-words64", 0},
      {"-neon", kNeedsNeon},
      {"-arm", 0},
      {"-portable", 0}};
  ExpectNeeds(kDesEncryptKernels, kinds);
  ExpectNeeds(kDesDecryptKernels, kinds);
}

TEST(DesSchedule, IgnoresParityBits) {
  std::mt19937 random(3);
  const Bytes block = RandomBytes(random, kDesBlockSize);
  for (const uint32_t key_length : kKeyLengths) {
    const Bytes key = RandomBytes(random, key_length);
    for (uint32_t i = 0; i < key_length; ++i) {
      Bytes other = key;
      other[i] ^= 1;
      EXPECT_EQ(Encrypted(other, block), Encrypted(key, block)) << i;
      for (int bit = 1; bit < 8; ++bit) {
        Bytes changed = key;
        changed[i] = static_cast<uint8_t>(changed[i] ^ 1 << bit);
        EXPECT_NE(Encrypted(changed, block), Encrypted(key, block)) << i << " " << bit;
      }
    }
  }
}

TEST(DesSchedule, OfTheComplementedKeyGivesTheComplementForTheComplementedBlock) {
  std::mt19937 random(4);
  Bytes key = RandomBytes(random, 8);
  Bytes block = RandomBytes(random, kDesBlockSize);
  Bytes expected = Encrypted(key, block);
  for (Bytes* bytes : {&key, &block, &expected}) {
    for (uint8_t& byte : *bytes) byte = static_cast<uint8_t>(~byte);
  }
  EXPECT_EQ(Encrypted(key, block), expected);
}

TEST(DesSchedule, OfEqualKeysIsSingleDes) {
  std::mt19937 random(5);
  const Bytes block = RandomBytes(random, 5 * kDesBlockSize);
  const Bytes key = RandomBytes(random, 8);
  const Bytes other = RandomBytes(random, 8);
  EXPECT_EQ(Encrypted(key + key, block), Encrypted(key, block));
  EXPECT_EQ(Encrypted(key + key + key, block), Encrypted(key, block));
  // The second key undoes the first one, the third undoes the second one.
  EXPECT_EQ(Encrypted(key + key + other, block), Encrypted(other, block));
  EXPECT_EQ(Encrypted(other + key + key, block), Encrypted(other, block));
  // Two keys are three with the first one again.
  EXPECT_EQ(Encrypted(key + other, block), Encrypted(key + other + key, block));
  EXPECT_NE(Encrypted(key + other, block), Encrypted(other + key, block));
}

TEST(DesSchedule, HasTheRoundKeysOfDecryptionInReverse) {
  std::mt19937 random(6);
  for (const uint32_t key_length : kKeyLengths) {
    const DesSchedule schedule = Expanded(RandomBytes(random, key_length));
    ASSERT_EQ(schedule.rounds, key_length == 8 ? 16u : 48u);
    for (uint32_t round = 0; round < schedule.rounds; ++round) {
      const uint32_t other = schedule.rounds - 1 - round;
      EXPECT_EQ(schedule.decryption[2 * round], schedule.encryption[2 * other]);
      EXPECT_EQ(schedule.decryption[2 * round + 1], schedule.encryption[2 * other + 1]);
      EXPECT_EQ(schedule.encryption[2 * round] & 0xC0C0C0C0u, 0u);
      EXPECT_EQ(schedule.encryption[2 * round + 1] & 0xC0C0C0C0u, 0u);
    }
  }
}

TEST(DesSchedule, IsMadeOfThreeKeyLengthsOnly) {
  const Bytes key(64, 1);
  for (uint32_t length = 0; length <= 64; ++length) {
    DesSchedule schedule;
    std::memset(&schedule, 0xA5, sizeof schedule);
    const bool is_length = length == 8 || length == 16 || length == 24;
    EXPECT_EQ(ExpandDesKey(key.data(), length, &schedule), is_length) << length;
    EXPECT_EQ(schedule.rounds == 0xA5A5A5A5u, !is_length) << length;
  }
}

}  // namespace
}  // namespace mirolta::test
