#include "aes_kernels.h"

#include <gtest/gtest.h>

#include <cstring>

#include "aes_schedule.h"
#include "aes_tables.h"
#include "kernel_checks.h"
#include "test_bytes.h"

namespace mirolta {
namespace {

struct Vector {
  const char* key;
  const char* plaintext;
  const char* ciphertext;
};

// FIPS-197, appendices B and C.
constexpr Vector kFips197[] = {
    {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734",
     "3925841d02dc09fbdc118597196a0b32"},
    {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff",
     "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {"000102030405060708090a0b0c0d0e0f1011121314151617", "00112233445566778899aabbccddeeff",
     "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"},
};

AesSchedule Expanded(const Bytes& key) {
  AesSchedule schedule = {};
  EXPECT_TRUE(ExpandAesKey(key.data(), static_cast<uint32_t>(key.size()), &schedule));
  return schedule;
}

TEST(AesKernels, TransformTheStandardsVectors) {
  for (const Vector& vector : kFips197) {
    SCOPED_TRACE(vector.key);
    const AesSchedule schedule = Expanded(FromHex(vector.key));
    const Bytes plaintext = FromHex(vector.plaintext);
    const Bytes ciphertext = FromHex(vector.ciphertext);
    ForEachKernel(kAesEncryptKernels, [&](const Kernel<AesTransform>& kernel) {
      Bytes out(kAesBlockSize);
      kernel.function(schedule, plaintext.data(), out.data(), 1);
      EXPECT_EQ(out, ciphertext);
    });
    ForEachKernel(kAesDecryptKernels, [&](const Kernel<AesTransform>& kernel) {
      Bytes out(kAesBlockSize);
      kernel.function(schedule, ciphertext.data(), out.data(), 1);
      EXPECT_EQ(out, plaintext);
    });
  }
}

TEST(AesKernels, AgreeWithThePortableOnes) {
  std::mt19937 random(1);
  for (uint32_t key_length : {16u, 24u, 32u}) {
    const AesSchedule schedule = Expanded(RandomBytes(random, key_length));
    ExpectKernelsAgree(kAesEncryptKernels, schedule, kAesBlockSize, random);
    ExpectKernelsAgree(kAesDecryptKernels, schedule, kAesBlockSize, random);
  }
}

TEST(AesKernels, ExpandKeysAsThePortableOneDoes) {
  std::mt19937 random(7);
  const KernelList<AesExpansion> list = kAesExpansionKernels;
  ForEachKernel(list, [&](const Kernel<AesExpansion>& kernel) {
    for (uint32_t key_length : {16u, 24u, 32u}) {
      for (uint32_t i = 0; i < 200; ++i) {
        const Bytes key = RandomBytes(random, key_length + 1);
        AesSchedule expected = {};
        AesSchedule schedule = {};
        AesExpandPortable(key.data() + 1, key_length, &expected);
        kernel.function(key.data() + 1, key_length, &schedule);
        ASSERT_EQ(std::memcmp(&schedule, &expected, sizeof expected), 0) << key_length;
      }
    }
  });
}

TEST(AesKernels, ChosenOnesAreTheFirstThatTheProcessorRuns) {
  const KernelList<AesTransform> encrypt = kAesEncryptKernels;
  const KernelList<AesTransform> decrypt = kAesDecryptKernels;
  uint32_t i = 0;
  while ((encrypt[i].needs & ~ProcessorFeatures()) != 0) ++i;
  EXPECT_EQ(CurrentKernel<kAesEncryptKernels>(), encrypt[i].function);
  i = 0;
  while ((decrypt[i].needs & ~ProcessorFeatures()) != 0) ++i;
  EXPECT_EQ(CurrentKernel<kAesDecryptKernels>(), decrypt[i].function);
}

TEST(AesTables, TwoOfThemAreEqual) {
  const AesTables first;
  const AesTables second;
  EXPECT_EQ(std::memcmp(first.substitution, second.substitution, sizeof first.substitution), 0);
  EXPECT_EQ(std::memcmp(first.inverse_substitution, second.inverse_substitution,
                        sizeof first.inverse_substitution),
            0);
  EXPECT_EQ(
      std::memcmp(first.round_constants, second.round_constants, sizeof first.round_constants), 0);
  EXPECT_EQ(std::memcmp(first.forward, second.forward, sizeof first.forward), 0);
  EXPECT_EQ(std::memcmp(first.inverse, second.inverse, sizeof first.inverse), 0);
  EXPECT_EQ(&SharedAesTables(), &SharedAesTables());
}

TEST(AesTables, HoldTheStandardsValues) {
  const AesTables& tables = SharedAesTables();
  // FIPS-197, figures 7 and 14, and the example of 5.1.1.
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

TEST(AesSchedule, ExpandsTheStandardsKeys) {
  // FIPS-197, appendix A: the last word of each expansion.
  const AesSchedule key128 = Expanded(FromHex("2b7e151628aed2a6abf7158809cf4f3c"));
  EXPECT_EQ(key128.rounds, 10u);
  EXPECT_EQ(key128.encryption[4], 0x17FEFAA0u);
  EXPECT_EQ(key128.encryption[43], 0xA60C63B6u);
  const AesSchedule key192 = Expanded(FromHex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"));
  EXPECT_EQ(key192.rounds, 12u);
  EXPECT_EQ(key192.encryption[51], 0x02220001u);
  const AesSchedule key256 =
      Expanded(FromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"));
  EXPECT_EQ(key256.rounds, 14u);
  EXPECT_EQ(key256.encryption[59], 0x1E636C70u);
}

TEST(AesSchedule, RefusesOtherLengths) {
  const Bytes key(64, 1);
  for (uint32_t length = 0; length <= 64; ++length) {
    AesSchedule schedule;
    std::memset(&schedule, 0xA5, sizeof schedule);
    const bool taken = ExpandAesKey(key.data(), length, &schedule);
    EXPECT_EQ(taken, length == 16 || length == 24 || length == 32) << length;
    if (!taken) {
      EXPECT_EQ(schedule.rounds, 0xA5A5A5A5u);
    }
  }
}

}  // namespace
}  // namespace mirolta
