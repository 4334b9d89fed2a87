#include "hash_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace mirolta::test {
namespace {

struct Primitive {
  const char* name;
  KernelList<CompressBlocks> list;
  CompressBlocks chosen;
  size_t word_count;
};

const Primitive kPrimitives[] = {
    {"md5", kMd5Kernels, CurrentKernel<kMd5Kernels>(), 4},
    {"sha1", kSha1Kernels, CurrentKernel<kSha1Kernels>(), 5},
    {"sha256", kSha256Kernels, CurrentKernel<kSha256Kernels>(), 8},
};

TEST(HashKernels, ListsEndInAPortableKernelAndStartWithTheChosenOne) {
  for (const Primitive& primitive : kPrimitives) {
    const KernelList<CompressBlocks>& list = primitive.list;
    ASSERT_GE(list.size(), 1u);
    EXPECT_EQ(list[list.size() - 1].needs, 0u);
    for (size_t i = 0; i < list.size(); ++i) {
      EXPECT_EQ(std::string(list[i].name).rfind(primitive.name, 0), 0u);
      if ((list[i].needs & ~ProcessorFeatures()) == 0) {
        EXPECT_EQ(primitive.chosen, list[i].function);
        break;
      }
    }
  }
}

#ifdef MIROLTA_PORTABLE_ONLY
TEST(HashKernels, APortableBuildHasNoOthers) {
  for (const Primitive& primitive : kPrimitives) EXPECT_EQ(primitive.list.size(), 1u);
}
#endif

// Two blocks whose results are known from the standards' own examples: the padded "abc".
TEST(HashKernels, EveryKernelDigestsAbc) {
  const struct {
    uint32_t start[8];
    bool high_first;
    uint32_t end[8];
  } rows[] = {
      {{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476},
       false,
       {0x98500190, 0xB04FD23C, 0x7D3F96D6, 0x727FE128}},
      {{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0},
       true,
       {0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D}},
      {{0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB,
        0x5BE0CD19},
       true,
       {0xBA7816BF, 0x8F01CFEA, 0x414140DE, 0x5DAE2223, 0xB00361A3, 0x96177A9C, 0xB410FF61,
        0xF20015AD}},
  };
  for (size_t p = 0; p < 3; ++p) {
    uint8_t block[kHashBlockSize] = {'a', 'b', 'c', 0x80};
    block[rows[p].high_first ? 63 : 56] = 24;
    const KernelList<CompressBlocks>& list = kPrimitives[p].list;
    for (size_t k = 0; k < list.size(); ++k) {
      if ((list[k].needs & ~ProcessorFeatures()) != 0) {
        std::cout << "skipped, not on this processor: " << list[k].name << "\n";
        continue;
      }
      uint32_t state[8];
      std::memcpy(state, rows[p].start, sizeof state);
      list[k].function(state, block, 1);
      for (size_t i = 0; i < kPrimitives[p].word_count; ++i) {
        EXPECT_EQ(state[i], rows[p].end[i]) << list[k].name << " word " << i;
      }
    }
  }
}

TEST(HashKernels, EveryKernelIsThePortableOneOnRandomBlocks) {
  std::mt19937 random(7);
  for (const Primitive& primitive : kPrimitives) {
    const KernelList<CompressBlocks>& list = primitive.list;
    const CompressBlocks portable = list[list.size() - 1].function;
    for (size_t k = 0; k < list.size(); ++k) {
      if ((list[k].needs & ~ProcessorFeatures()) != 0) {
        std::cout << "skipped, not on this processor: " << list[k].name << "\n";
        continue;
      }
      for (int round = 0; round < 400; ++round) {
        const size_t blocks = random() % 6;
        const size_t offset = random() % 17;
        std::vector<uint8_t> memory(offset + blocks * kHashBlockSize + 1);
        for (uint8_t& byte : memory) {
          // Some rounds are all ones or zeros, where carries run longest.
          byte = round % 16 == 0 ? 0xFF : round % 16 == 1 ? 0 : static_cast<uint8_t>(random());
        }
        // A word more than the state has, to see that it is left alone.
        uint32_t state[9], expected[9];
        for (int i = 0; i < 9; ++i)
          state[i] = round % 16 == 0 ? 0xFFFFFFFFu : static_cast<uint32_t>(random());
        std::memcpy(expected, state, sizeof state);
        list[k].function(state, memory.data() + offset, blocks);
        for (size_t i = 0; i < blocks; ++i) {
          portable(expected, memory.data() + offset + i * kHashBlockSize, 1);
        }
        ASSERT_EQ(std::memcmp(state, expected, sizeof state), 0)
            << list[k].name << ", " << blocks << " blocks";
      }
    }
  }
}

// Finishing is padding in memory and compressing, whatever stands behind the bytes that count and
// whatever the lengths' upper bits are.
TEST(HashKernels, FinishingIsPaddingAndThePortableKernel) {
  const struct {
    KernelList<FinishDigest> list;
    CompressBlocks portable;
    size_t word_count;
    bool high_first;
  } rows[] = {{kMd5FinishKernels, Md5Portable, 4, false},
              {kSha1FinishKernels, Sha1Portable, 5, true},
              {kSha256FinishKernels, Sha256Portable, 8, true}};
  std::mt19937_64 random(11);
  for (const auto& row : rows) {
    EXPECT_EQ(row.list[row.list.size() - 1].needs, 0u);
    for (const Kernel<FinishDigest>& kernel : row.list) {
      if ((kernel.needs & ~ProcessorFeatures()) != 0) {
        std::cout << "skipped, not on this processor: " << kernel.name << "\n";
        continue;
      }
      for (uint32_t waiting = 0; waiting < kHashBlockSize; ++waiting) {
        uint8_t block[kHashBlockSize];
        for (uint8_t& byte : block) byte = static_cast<uint8_t>(random());
        uint32_t state[9], expected[9];
        for (int i = 0; i < 9; ++i) state[i] = expected[i] = static_cast<uint32_t>(random());
        const uint64_t bit_count = random();
        uint8_t padded[2 * kHashBlockSize] = {};
        std::memcpy(padded, block, waiting);
        padded[waiting] = 0x80;
        const size_t blocks = waiting < 56 ? 1 : 2;
        for (size_t i = 0; i < 8; ++i) {
          const size_t at = row.high_first ? 7 - i : i;
          padded[64 * blocks - 8 + at] = static_cast<uint8_t>(bit_count >> (8 * i));
        }
        row.portable(expected, padded, blocks);

        // A byte more than the digest has, to see that it is left alone.
        uint8_t digest[33];
        std::memset(digest, 0xA5, sizeof digest);
        kernel.function(state, block, waiting, bit_count, digest);
        ASSERT_EQ(std::memcmp(state, expected, sizeof state), 0) << kernel.name << ", " << waiting;
        for (size_t i = 0; i < 4 * row.word_count; ++i) {
          const size_t shift = row.high_first ? 24 - 8 * (i % 4) : 8 * (i % 4);
          ASSERT_EQ(digest[i], static_cast<uint8_t>(expected[i / 4] >> shift))
              << kernel.name << ", " << waiting << " bytes, byte " << i;
        }
        ASSERT_EQ(digest[4 * row.word_count], 0xA5);
      }
    }
  }
}

// Ending both computations of an HMAC at once is ending one after the other.
TEST(HashKernels, FinishingKeyedIsFinishingTwice) {
  const FinishKeyedDigest finish_keyed = CurrentKernel<kSha256FinishKeyedKernels>();
  if (finish_keyed == nullptr) GTEST_SKIP() << "not on this processor: keyed finishing of sha256";
  std::mt19937_64 random(13);
  for (uint32_t waiting = 0; waiting < 56; ++waiting) {
    uint8_t block[kHashBlockSize];
    for (uint8_t& byte : block) byte = static_cast<uint8_t>(random());
    // A word more than the state has, to see that it is left alone.
    uint32_t state[9], inner[9], outer[8];
    for (int i = 0; i < 9; ++i) state[i] = inner[i] = static_cast<uint32_t>(random());
    for (uint32_t& word : outer) word = static_cast<uint32_t>(random());
    uint32_t expected[9];
    std::memcpy(expected, outer, sizeof outer);
    expected[8] = state[8];
    const uint64_t bit_count = random();
    uint8_t inner_block[kHashBlockSize] = {};
    std::memcpy(inner_block, block, waiting);
    inner_block[waiting] = 0x80;
    for (int i = 0; i < 8; ++i) inner_block[63 - i] = static_cast<uint8_t>(bit_count >> (8 * i));
    Sha256Portable(inner, inner_block, 1);
    uint8_t outer_block[kHashBlockSize] = {};
    for (size_t i = 0; i < 32; ++i) {
      outer_block[i] = static_cast<uint8_t>(inner[i / 4] >> (24 - 8 * (i % 4)));
    }
    // 96 bytes are 0x300 bits.
    outer_block[32] = 0x80;
    outer_block[62] = 0x03;
    Sha256Portable(expected, outer_block, 1);

    const std::vector<uint32_t> outer_before(outer, outer + 8);
    uint8_t digest[33];
    std::memset(digest, 0xA5, sizeof digest);
    finish_keyed(state, outer, block, waiting, bit_count, digest);
    ASSERT_EQ(std::memcmp(state, expected, sizeof state), 0) << waiting;
    ASSERT_EQ(std::memcmp(outer, outer_before.data(), sizeof outer), 0) << waiting;
    for (size_t i = 0; i < 32; ++i) {
      ASSERT_EQ(digest[i], static_cast<uint8_t>(expected[i / 4] >> (24 - 8 * (i % 4))))
          << waiting << " bytes, byte " << i;
    }
    ASSERT_EQ(digest[32], 0xA5);
  }
}

}  // namespace
}  // namespace mirolta::test
