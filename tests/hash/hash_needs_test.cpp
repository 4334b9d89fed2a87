// A compression function runs only where its instructions are.
#include <gtest/gtest.h>

#include <string>

#include "hash_kernels.h"

namespace mirolta::test {
namespace {

TEST(HashNeeds, KernelsAskForTheirInstructions) {
  for (const HashKernelList& list : {Md5Kernels(), Sha1Kernels(), Sha256Kernels()}) {
    for (size_t i = 0; i < list.count; ++i) {
      const std::string name = list.kernels[i].name;
      const bool plain = name.find("-portable") != std::string::npos;
      EXPECT_TRUE(plain || name.find("-shani") != std::string::npos) << name;
      EXPECT_EQ(list.kernels[i].needs, plain ? 0u : kFeatureSsse3 | kFeatureSha) << name;
    }
  }
}

}  // namespace
}  // namespace mirolta::test
