#include "aes_kernels.h"

#include <gtest/gtest.h>

#include <cstring>

#include "aes_schedule.h"
#include "aes_tables.h"
#include "block_kernel_checks.h"
#include "cipher_vectors.h"
#include "seam/neon.h"

namespace mirolta::test {
namespace {

constexpr uint32_t kKeyLengths[] = {16, 24, 32};

AesSchedule Expanded(const Bytes& key) {
  AesSchedule schedule = {};
  EXPECT_TRUE(ExpandAesKey(key.data(), static_cast<uint32_t>(key.size()), &schedule));
  return schedule;
}

bool AreEqual(const AesSchedule& a, const AesSchedule& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

void CheckVector(const Bytes& key, const Bytes& plaintext, const Bytes& ciphertext) {
  const AesSchedule schedule = Expanded(key);
  ExpectTransforms(kAesEncryptKernels, schedule, kAesBlockSize, plaintext, ciphertext);
  ExpectTransforms(kAesDecryptKernels, schedule, kAesBlockSize, ciphertext, plaintext);
}

TEST(AesKernels, TransformAsPublished) {
  ForEachAesVector(CheckVector);
}

TEST(AesKernels, AgreeWithThePortableOnes) {
  std::mt19937 random(1);
  for (const uint32_t length : kKeyLengths) {
    const AesSchedule schedule = Expanded(RandomBytes(random, length));
    ExpectKernelsAgree(kAesEncryptKernels, schedule, kAesBlockSize, random);
    ExpectKernelsAgree(kAesDecryptKernels, schedule, kAesBlockSize, random);
  }
}

TEST(AesKernels, TouchNothingBeforeOrBehindScheduleAndBlocks) {
  for (const uint32_t length : kKeyLengths) {
    const AesSchedule schedule = Expanded(Bytes(length, 0x3C));
    ExpectInsideBounds(kAesEncryptKernels, schedule, kAesBlockSize);
    ExpectInsideBounds(kAesDecryptKernels, schedule, kAesBlockSize);
  }
}

// The kernels of builds without tables, which are in no list of this build.
constexpr Kernel<AesTransform> kCompactEncryptRows[] = {
    {"aes-encrypt-compact", 0, AesEncryptCompact}, {"aes-encrypt-portable", 0, AesEncryptPortable}};
constexpr Kernel<AesTransform> kCompactDecryptRows[] = {
    {"aes-decrypt-compact", 0, AesDecryptCompact}, {"aes-decrypt-portable", 0, AesDecryptPortable}};
constexpr KernelList<AesTransform> kCompactEncrypt = kCompactEncryptRows;
constexpr KernelList<AesTransform> kCompactDecrypt = kCompactDecryptRows;

TEST(AesCompactKernels, TransformAsPublished) {
  ForEachAesVector([](const Bytes& key, const Bytes& plaintext, const Bytes& ciphertext) {
    AesSchedule schedule = {};
    AesExpandCompact(key.data(), static_cast<uint32_t>(key.size()), &schedule);
    ExpectTransforms(kCompactEncrypt, schedule, kAesBlockSize, plaintext, ciphertext);
    ExpectTransforms(kCompactDecrypt, schedule, kAesBlockSize, ciphertext, plaintext);
  });
}

TEST(AesCompactKernels, AgreeWithThePortableOnes) {
  std::mt19937 random(2);
  for (const uint32_t length : kKeyLengths) {
    const Bytes key = RandomBytes(random, length);
    const AesSchedule schedule = Expanded(key);
    AesSchedule compact = {};
    AesExpandCompact(key.data(), length, &compact);
    EXPECT_TRUE(AreEqual(compact, schedule));
    ExpectKernelsAgree(kCompactEncrypt, schedule, kAesBlockSize, random);
    ExpectKernelsAgree(kCompactDecrypt, schedule, kAesBlockSize, random);
    ExpectInsideBounds(kCompactEncrypt, schedule, kAesBlockSize);
    ExpectInsideBounds(kCompactDecrypt, schedule, kAesBlockSize);
  }
}

TEST(AesKernels, EndInAPortableOneAndTheFirstThatRunsIsChosen) {
  ExpectOrderedList(kAesEncryptKernels, "aes-encrypt", CurrentKernel<kAesEncryptKernels>());
  ExpectOrderedList(kAesDecryptKernels, "aes-decrypt", CurrentKernel<kAesDecryptKernels>());
  ExpectOrderedList(kAesExpansionKernels, "aes-expand", CurrentKernel<kAesExpansionKernels>());
}

TEST(AesKernels, NeedTheInstructionsThatTheyUse) {
  constexpr uint32_t kAesNi = kFeatureSsse3 | kFeatureAesNi;
  constexpr uint32_t kVaes256 = kAesNi | kFeatureAvx2 | kFeatureVaes;
  const std::vector<KernelKind> kinds = {{"-vaes512", kVaes256 | kFeatureAvx512},
                                         {"-vaes256", kVaes256},
                                         {"-aesni", kAesNi},
                                         {"-sse2", kFeatureSse2},
                                         {"-neon", kNeedsNeon},
                                         {"-arm", 0},
                                         {"-armv8", kFeatureArmAes},
                                         {"-portable", 0}};
  ExpectNeeds(kAesExpansionKernels, kinds);
  ExpectNeeds(kAesEncryptKernels, kinds);
  ExpectNeeds(kAesDecryptKernels, kinds);
}

TEST(AesExpansions, AgreeWithThePortableOne) {
  std::mt19937 random(7);
  ForEachKernel(kAesExpansionKernels, [&](const auto& kernel) {
    for (const uint32_t length : kKeyLengths) {
      for (uint32_t i = 0; i < 200; ++i) {
        const Bytes key = RandomBytes(random, length + 1);
        AesSchedule expected = {};
        AesSchedule schedule = {};
        AesExpandPortable(key.data() + 1, length, &expected);
        kernel.function(key.data() + 1, length, &schedule);
        ASSERT_TRUE(AreEqual(schedule, expected)) << length;
      }
    }
  });
}

TEST(AesExpansions, TouchNothingBeforeOrBehindKeyAndSchedule) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const uint32_t length : kKeyLengths) {
      const Bytes key(length, 0x5A);
      AesSchedule expected = {};
      AesExpandPortable(key.data(), length, &expected);
      const GuardedMemory guarded_key(guard, length);
      guarded_key.Copy(key.data(), length);
      ForEachKernel(kAesExpansionKernels, [&](const auto& kernel) {
        const GuardedMemory memory(guard, sizeof(AesSchedule));
        const AesSchedule empty = {};
        AesSchedule* const schedule = memory.Copy(&empty);
        kernel.function(guarded_key.data(), length, schedule);
        EXPECT_TRUE(AreEqual(*schedule, expected)) << length;
      });
    }
  }
}

TEST(AesTables, AreTheSameHoweverOftenMade) {
  const AesTables first;
  const AesTables second;
  const auto expect_same = [](const auto& a, const auto& b) {
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
  };
  expect_same(first.substitution, second.substitution);
  expect_same(first.inverse_substitution, second.inverse_substitution);
  expect_same(first.round_constants, second.round_constants);
  expect_same(first.forward, second.forward);
  expect_same(first.inverse, second.inverse);
  EXPECT_EQ(&SharedAesTables(), &SharedAesTables());
}

// FIPS 197, figures 7 and 14, and the example of 5.1.1.
TEST(AesTables, HoldThePublishedValues) {
  const AesTables& tables = SharedAesTables();
  EXPECT_EQ(tables.substitution[0x00], 0x63);
  EXPECT_EQ(tables.substitution[0x01], 0x7C);
  EXPECT_EQ(tables.substitution[0x53], 0xED);
  EXPECT_EQ(tables.substitution[0xFF], 0x16);
  EXPECT_EQ(tables.inverse_substitution[0x00], 0x52);
  for (uint32_t v = 0; v < 256; ++v) {
    EXPECT_EQ(tables.inverse_substitution[tables.substitution[v]], v);
  }
  EXPECT_EQ(tables.round_constants[0], 0x01u);
  EXPECT_EQ(tables.round_constants[7], 0x80u);
  EXPECT_EQ(tables.round_constants[8], 0x1Bu);
  EXPECT_EQ(tables.round_constants[9], 0x36u);
  EXPECT_EQ(tables.forward[0][0], 0xA56363C6u);
  EXPECT_EQ(tables.forward[1][0], 0x6363C6A5u);
  EXPECT_EQ(tables.forward[3][0], 0xC6A56363u);
  EXPECT_EQ(tables.inverse[0][0], 0x50A7F451u);
}

// FIPS 197, appendix A.
TEST(AesSchedule, HasThePublishedRoundsAndWords) {
  const struct {
    const char* key;
    uint32_t rounds;
    uint32_t index;
    uint32_t word;
  } rows[] = {
      {"2b7e151628aed2a6abf7158809cf4f3c", 10, 4, 0x17FEFAA0},
      {"2b7e151628aed2a6abf7158809cf4f3c", 10, 43, 0xA60C63B6},
      {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b", 12, 51, 0x02220001},
      {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4", 14, 59, 0x1E636C70},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    const AesSchedule schedule = Expanded(BytesOfHex(row.key));
    EXPECT_EQ(schedule.rounds, row.rounds);
    EXPECT_EQ(schedule.encryption[row.index], row.word) << row.index;
  }
}

TEST(AesSchedule, IsMadeOfThreeKeyLengthsOnly) {
  const Bytes key(64, 1);
  for (uint32_t length = 0; length <= 64; ++length) {
    AesSchedule schedule;
    std::memset(&schedule, 0xA5, sizeof schedule);
    const bool is_length = length == 16 || length == 24 || length == 32;
    EXPECT_EQ(ExpandAesKey(key.data(), length, &schedule), is_length) << length;
    EXPECT_EQ(schedule.rounds == 0xA5A5A5A5u, !is_length) << length;
  }
}

}  // namespace
}  // namespace mirolta::test
