// No compression function touches what lies before or behind its chain and its blocks.
#include <gtest/gtest.h>

#include <vector>

#include "guarded_memory.h"
#include "hash_kernels.h"

namespace mirolta::test {
namespace {

void ExpectInsideBounds(const KernelList<CompressBlocks>& list, size_t words) {
  const CompressBlocks portable = list[list.size() - 1].function;
  const std::vector<uint32_t> start(words, 0x9E3779B9u);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const size_t blocks : {0u, 1u, 2u, 3u, 9u}) {
      const std::vector<uint8_t> message(blocks * kHashBlockSize, 0x71);
      std::vector<uint32_t> expected = start;
      portable(expected.data(), message.data(), blocks);
      const GuardedMemory in(guard, message.size());
      in.Copy(message.data(), message.size());
      for (size_t i = 0; i < list.size(); ++i) {
        if ((list[i].needs & ~ProcessorFeatures()) != 0) continue;
        const GuardedMemory chain(guard, words * sizeof(uint32_t));
        uint32_t* const state = chain.Copy(start.data(), words);
        list[i].function(state, in.data(), blocks);
        EXPECT_EQ(std::vector<uint32_t>(state, state + words), expected)
            << list[i].name << " " << blocks;
      }
    }
  }
}

TEST(HashBounds, Md5StaysInside) {
  ExpectInsideBounds(kMd5Kernels, 4);
}
TEST(HashBounds, Sha1StaysInside) {
  ExpectInsideBounds(kSha1Kernels, 5);
}
TEST(HashBounds, Sha256StaysInside) {
  ExpectInsideBounds(kSha256Kernels, 8);
}

}  // namespace
}  // namespace mirolta::test
