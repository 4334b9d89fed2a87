#include "hash_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bytes.h"
#include "guarded_memory.h"
#include "kernel_rows.h"

namespace mirolta::test {
namespace {

using Words = std::vector<uint32_t>;

struct Primitive {
  const char* name;
  KernelList<CompressBlocks> list;
  CompressBlocks chosen;
  bool high_first;
  Words initial;
  Words of_abc;  // the chaining value after the padded message "abc"
};

const Primitive kPrimitives[] = {
    {"md5",
     kMd5Kernels,
     CurrentKernel<kMd5Kernels>(),
     false,
     {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476},
     {0x98500190, 0xB04FD23C, 0x7D3F96D6, 0x727FE128}},
    {"sha1",
     kSha1Kernels,
     CurrentKernel<kSha1Kernels>(),
     true,
     {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0},
     {0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D}},
    {"sha256",
     kSha256Kernels,
     CurrentKernel<kSha256Kernels>(),
     true,
     {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB,
      0x5BE0CD19},
     {0xBA7816BF, 0x8F01CFEA, 0x414140DE, 0x5DAE2223, 0xB00361A3, 0x96177A9C, 0xB410FF61,
      0xF20015AD}},
};

// What the kernels of compression and finishing need, by the ends of their names.
const std::vector<KernelKind> kKinds = {{"-shani", kFeatureSsse3 | kFeatureSha},
                                        {"sha1-armv8", kFeatureArmSha1},
                                        {"sha1-finish-armv8", kFeatureArmSha1},
                                        {"sha256-armv8", kFeatureArmSha2},
                                        {"sha256-finish-armv8", kFeatureArmSha2},
                                        {"-neon", kFeatureNeon},
                                        {"-portable", 0}};

class HashKernels : public testing::TestWithParam<Primitive> {
 protected:
  const KernelList<CompressBlocks>& list() const { return GetParam().list; }
  size_t words() const { return GetParam().initial.size(); }
};

INSTANTIATE_TEST_SUITE_P(All, HashKernels, testing::ValuesIn(kPrimitives),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(HashKernels, EndInAPortableOneAndTheFirstThatRunsIsChosen) {
  ExpectOrderedList(list(), GetParam().name, GetParam().chosen);
}

TEST_P(HashKernels, NeedTheInstructionsThatTheyUse) {
  ExpectNeeds(list(), kKinds);
}

// The examples of RFC 1321 and FIPS 180-2.
TEST_P(HashKernels, CompressThePaddedMessageAbc) {
  uint8_t block[kHashBlockSize] = {'a', 'b', 'c', 0x80};
  block[GetParam().high_first ? 63 : 56] = 24;
  ForEachKernel(list(), [&](const auto& kernel) {
    Words state = GetParam().initial;
    kernel.function(state.data(), block, 1);
    EXPECT_EQ(state, GetParam().of_abc);
  });
}

TEST_P(HashKernels, AgreeWithThePortableOneOnRandomBlocks) {
  std::mt19937 random(7);
  ForEachKernel(list(), [&](const auto& kernel) {
    for (int round = 0; round < 400; ++round) {
      const size_t blocks = Below(random, 6);
      const size_t offset = Below(random, 17);
      Bytes memory = RandomBytes(random, offset + blocks * kHashBlockSize + 1);
      // A word more than the state has, to see that it is left alone.
      Words state(words() + 1);
      for (uint32_t& word : state) word = static_cast<uint32_t>(random());
      // Some rounds are all ones or zeros, where carries run longest.
      if (round % 16 < 2) std::memset(memory.data(), round % 16 == 0 ? 0xFF : 0, memory.size());
      if (round % 16 == 0) state.assign(words() + 1, 0xFFFFFFFF);
      Words expected = state;
      kernel.function(state.data(), memory.data() + offset, blocks);
      for (size_t i = 0; i < blocks; ++i) {
        PortableOf(list())(expected.data(), memory.data() + offset + i * kHashBlockSize, 1);
      }
      ASSERT_EQ(state, expected) << blocks << " blocks";
    }
  });
}

TEST_P(HashKernels, TouchNothingBeforeOrBehindChainingValueAndBlocks) {
  const Words start(words(), 0x9E3779B9u);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const size_t blocks : {0u, 1u, 2u, 3u, 9u}) {
      const Bytes message(blocks * kHashBlockSize, 0x71);
      Words expected = start;
      PortableOf(list())(expected.data(), message.data(), blocks);
      const GuardedMemory in(guard, message.size());
      in.Copy(message.data(), message.size());
      ForEachKernel(list(), [&](const auto& kernel) {
        const GuardedMemory chain(guard, words() * sizeof(uint32_t));
        uint32_t* const state = chain.Copy(start.data(), words());
        kernel.function(state, in.data(), blocks);
        EXPECT_EQ(Words(state, state + words()), expected) << blocks;
      });
    }
  }
}

// The end of a message, of which `waiting` bytes of `block` are left: padded to one block or two.
Bytes PaddedEnd(const uint8_t* block, uint32_t waiting, uint64_t bit_count, bool high_first) {
  Bytes padded(block, block + waiting);
  padded.push_back(0x80);
  padded.resize(waiting < 56 ? 64 : 128);
  for (size_t i = 0; i < 8; ++i) {
    padded[padded.size() - (high_first ? i + 1 : 8 - i)] = static_cast<uint8_t>(bit_count >> 8 * i);
  }
  return padded;
}

Bytes BytesOfWords(const Words& words, bool high_first) {
  Bytes bytes(4 * words.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<uint8_t>(words[i / 4] >> (high_first ? 24 - 8 * (i % 4) : 8 * (i % 4)));
  }
  return bytes;
}

// A message's end: random bytes, those that count and those behind them, and a chaining value with
// a word more than the state has. Finishing writes state and digest, which has a byte more.
struct MessageEnd {
  MessageEnd(std::mt19937_64& random, uint32_t waiting_bytes, size_t words)
      : waiting(waiting_bytes), state(words + 1), digest(4 * words + 1, 0xA5) {
    for (uint8_t& byte : block) byte = static_cast<uint8_t>(random());
    for (uint32_t& word : state) word = static_cast<uint32_t>(random());
    bit_count = random();
  }
  Words Compressed(CompressBlocks portable, bool high_first) const {
    Words expected = state;
    const Bytes padded = PaddedEnd(block, waiting, bit_count, high_first);
    portable(expected.data(), padded.data(), padded.size() / kHashBlockSize);
    return expected;
  }
  void ExpectResult(const Words& expected, bool high_first) const {
    ASSERT_EQ(state, expected) << waiting << " bytes";
    const Words words(expected.begin(), expected.end() - 1);
    ASSERT_EQ(digest, BytesOfWords(words, high_first) + Bytes{0xA5}) << waiting << " bytes";
  }

  uint32_t waiting;
  uint8_t block[kHashBlockSize];
  uint64_t bit_count;
  Words state;
  Bytes digest;
};

struct Finish {
  const char* name;
  KernelList<FinishDigest> list;
  FinishDigest chosen;
  CompressBlocks portable;
  size_t words;
  bool high_first;
};

const Finish kFinishes[] = {
    {"md5", kMd5FinishKernels, CurrentKernel<kMd5FinishKernels>(), Md5Portable, 4, false},
    {"sha1", kSha1FinishKernels, CurrentKernel<kSha1FinishKernels>(), Sha1Portable, 5, true},
    {"sha256", kSha256FinishKernels, CurrentKernel<kSha256FinishKernels>(), Sha256Portable, 8,
     true}};

class HashFinishKernels : public testing::TestWithParam<Finish> {};

INSTANTIATE_TEST_SUITE_P(All, HashFinishKernels, testing::ValuesIn(kFinishes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(HashFinishKernels, EndInAPortableOneAndTheFirstThatRunsIsChosen) {
  ExpectOrderedList(GetParam().list, GetParam().name, GetParam().chosen);
}

TEST_P(HashFinishKernels, NeedTheInstructionsThatTheyUse) {
  ExpectNeeds(GetParam().list, kKinds);
}

TEST_P(HashFinishKernels, PadCompressAndWriteTheDigest) {
  std::mt19937_64 random(11);
  ForEachKernel(GetParam().list, [&](const auto& kernel) {
    for (uint32_t waiting = 0; waiting < kHashBlockSize; ++waiting) {
      MessageEnd end(random, waiting, GetParam().words);
      const Words expected = end.Compressed(GetParam().portable, GetParam().high_first);
      kernel.function(end.state.data(), end.block, waiting, end.bit_count, end.digest.data());
      end.ExpectResult(expected, GetParam().high_first);
    }
  });
}

TEST(HashFinishKeyedKernels, FinishInnerAndOuterComputationOfAnHmac) {
  const FinishKeyedDigest finish = CurrentKernel<kSha256FinishKeyedKernels>();
  if (finish == nullptr) GTEST_SKIP() << "not on this processor: keyed finishing of sha256";
  std::mt19937_64 random(13);
  for (uint32_t waiting = 0; waiting < 56; ++waiting) {
    MessageEnd end(random, waiting, 8);
    Words inner = end.Compressed(Sha256Portable, true);
    Words outer(8);
    for (uint32_t& word : outer) word = static_cast<uint32_t>(random());
    Words expected = outer;
    expected.push_back(inner.back());
    inner.pop_back();
    // The inner digest follows a block of pad.
    const Bytes digest = BytesOfWords(inner, true);
    const Bytes outer_end = PaddedEnd(digest.data(), 32, 8 * (64 + 32), true);
    Sha256Portable(expected.data(), outer_end.data(), 1);

    const Words outer_before = outer;
    finish(end.state.data(), outer.data(), end.block, waiting, end.bit_count, end.digest.data());
    end.ExpectResult(expected, true);
    ASSERT_EQ(outer, outer_before) << waiting;
  }
}

TEST(HashFinishKeyedKernels, NeedTheInstructionsThatTheyUse) {
  ExpectNeeds(kSha256FinishKeyedKernels, {{"-shani", kFeatureSsse3 | kFeatureSha}, {"none", 0}});
}

}  // namespace
}  // namespace mirolta::test
