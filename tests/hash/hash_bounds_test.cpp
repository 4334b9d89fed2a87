// No compression function touches what lies before or behind its chain and its blocks.
#include <gtest/gtest.h>

#include <vector>

#include "guarded_memory.h"
#include "hash_kernels.h"

namespace mirolta::test {
namespace {

void ExpectInsideBounds(const HashKernelList& list, size_t words) {
  const CompressBlocks portable = list.kernels[list.count - 1].function;
  const std::vector<uint32_t> start(words, 0x9E3779B9u);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const size_t blocks : {0u, 1u, 2u, 3u, 9u}) {
      const std::vector<uint8_t> message(blocks * kHashBlockSize, 0x71);
      std::vector<uint32_t> expected = start;
      portable(expected.data(), message.data(), blocks);
      const GuardedMemory in(guard, message.size());
      in.Copy(message.data(), message.size());
      for (size_t i = 0; i < list.count; ++i) {
        if ((list.kernels[i].needs & ~ProcessorFeatures()) != 0) continue;
        const GuardedMemory chain(guard, words * sizeof(uint32_t));
        uint32_t* const state = chain.Copy(start.data(), words);
        list.kernels[i].function(state, in.data(), blocks);
        EXPECT_EQ(std::vector<uint32_t>(state, state + words), expected)
            << list.kernels[i].name << " " << blocks;
      }
    }
  }
}

TEST(HashBounds, Md5StaysInside) {
  ExpectInsideBounds(Md5Kernels(), 4);
}
TEST(HashBounds, Sha1StaysInside) {
  ExpectInsideBounds(Sha1Kernels(), 5);
}
TEST(HashBounds, Sha256StaysInside) {
  ExpectInsideBounds(Sha256Kernels(), 8);
}

}  // namespace
}  // namespace mirolta::test
