// A compression function runs only where its instructions are.
#include <gtest/gtest.h>

#include <string>

#include "hash_kernels.h"

namespace mirolta::test {
namespace {

TEST(HashNeeds, KernelsAskForTheirInstructions) {
  for (const KernelList<CompressBlocks>& list : {kMd5Kernels, kSha1Kernels, kSha256Kernels}) {
    for (size_t i = 0; i < list.size(); ++i) {
      const std::string name = list[i].name;
      const bool plain = name.find("-portable") != std::string::npos;
      EXPECT_TRUE(plain || name.find("-shani") != std::string::npos) << name;
      EXPECT_EQ(list[i].needs, plain ? 0u : kFeatureSsse3 | kFeatureSha) << name;
    }
  }
}

}  // namespace
}  // namespace mirolta::test
