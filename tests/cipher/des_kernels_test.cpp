#include "des_kernels.h"

#include <gtest/gtest.h>

#include <cstring>

#include "des_schedule.h"
#include "kernel_checks.h"
#include "test_bytes.h"

namespace mirolta {
namespace {

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

struct Vector {
  const char* key;
  const char* plaintext;
  const char* ciphertext;
};

// FIPS 81, table B1 ("Now is the time for all "), and a key and block often used as worked example.
constexpr Vector kVectors[] = {
    {"0123456789abcdef", "4e6f772069732074", "3fa40e8a984d4815"},
    {"0123456789abcdef", "68652074696d6520", "6a271787ab8883f9"},
    {"0123456789abcdef", "666f7220616c6c20", "893d51ec4b563b53"},
    {"133457799bbcdff1", "0123456789abcdef", "85e813540f0ab405"},
};

TEST(DesKernels, TransformTheStandardVectors) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.ciphertext);
    const DesSchedule schedule = Expanded(FromHex(vector.key));
    const Bytes plaintext = FromHex(vector.plaintext);
    const Bytes ciphertext = FromHex(vector.ciphertext);
    ForEachKernel(kDesEncryptKernels, [&](const Kernel<DesTransform>& kernel) {
      Bytes out(kDesBlockSize);
      kernel.function(schedule, plaintext.data(), out.data(), 1);
      EXPECT_EQ(out, ciphertext);
    });
    ForEachKernel(kDesDecryptKernels, [&](const Kernel<DesTransform>& kernel) {
      Bytes out(kDesBlockSize);
      kernel.function(schedule, ciphertext.data(), out.data(), 1);
      EXPECT_EQ(out, plaintext);
    });
  }
}

TEST(DesKernels, AgreeWithThePortableOnes) {
  std::mt19937 random(2);
  for (uint32_t key_length : {8u, 16u, 24u}) {
    const DesSchedule schedule = Expanded(RandomBytes(random, key_length));
    ExpectKernelsAgree(kDesEncryptKernels, schedule, kDesBlockSize, random);
    ExpectKernelsAgree(kDesDecryptKernels, schedule, kDesBlockSize, random);
  }
}

TEST(DesKernels, ChosenOnesAreTheFirstThatTheProcessorRuns) {
  const KernelList<DesTransform> encrypt = kDesEncryptKernels;
  const KernelList<DesTransform> decrypt = kDesDecryptKernels;
  uint32_t i = 0;
  while ((encrypt[i].needs & ~ProcessorFeatures()) != 0) ++i;
  EXPECT_EQ(CurrentKernel<kDesEncryptKernels>(), encrypt[i].function);
  i = 0;
  while ((decrypt[i].needs & ~ProcessorFeatures()) != 0) ++i;
  EXPECT_EQ(CurrentKernel<kDesDecryptKernels>(), decrypt[i].function);
}

TEST(DesSchedule, IgnoresParityBits) {
  std::mt19937 random(3);
  const Bytes block = RandomBytes(random, kDesBlockSize);
  for (uint32_t key_length : {8u, 16u, 24u}) {
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

TEST(DesSchedule, ComplementedKeyAndBlockComplementTheResult) {
  std::mt19937 random(4);
  Bytes key = RandomBytes(random, 8);
  Bytes block = RandomBytes(random, kDesBlockSize);
  Bytes expected = Encrypted(key, block);
  for (Bytes* bytes : {&key, &block, &expected}) {
    for (uint8_t& byte : *bytes) byte = static_cast<uint8_t>(~byte);
  }
  EXPECT_EQ(Encrypted(key, block), expected);
}

TEST(DesSchedule, EqualKeysOfTripleDesAreSingleDes) {
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

TEST(DesSchedule, DecryptionIsEncryptionInReverse) {
  std::mt19937 random(6);
  for (uint32_t key_length : {8u, 16u, 24u}) {
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

TEST(DesSchedule, RefusesOtherLengths) {
  const Bytes key(64, 1);
  for (uint32_t length = 0; length <= 64; ++length) {
    DesSchedule schedule;
    std::memset(&schedule, 0xA5, sizeof schedule);
    const bool taken = ExpandDesKey(key.data(), length, &schedule);
    EXPECT_EQ(taken, length == 8 || length == 16 || length == 24) << length;
    if (!taken) {
      EXPECT_EQ(schedule.rounds, 0xA5A5A5A5u);
    }
  }
}

}  // namespace
}  // namespace mirolta
