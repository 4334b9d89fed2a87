// A kernel runs only where its instructions are: every row of the lists asks for those it has.
#include <gtest/gtest.h>

#include <string>

#include "aes_kernels.h"
#include "aes_schedule.h"
#include "des_kernels.h"

namespace mirolta {
namespace {

struct Needs {
  const char* kind;  // what the kernel's name ends with
  uint32_t features;
};

constexpr uint32_t kAesNi = kFeatureSsse3 | kFeatureAesNi;
constexpr uint32_t kVaes256 = kAesNi | kFeatureAvx2 | kFeatureVaes;

constexpr Needs kAesNeeds[] = {
    {"-vaes512", kVaes256 | kFeatureAvx512},
    {"-vaes256", kVaes256},
    {"-aesni", kAesNi},
    {"-portable", 0},
};

constexpr Needs kDesNeeds[] = {
    {"-avx512", kFeatureAvx512 | kFeatureGfni},
    {"-avx2", kFeatureAvx2},
    {"-gfni", kFeatureGfni},
    {"-words64", 0},
    {"-portable", 0},
};

template <typename List, size_t kCount>
void ExpectNeeds(const List& list, const Needs (&rows)[kCount]) {
  for (size_t i = 0; i < list.size(); ++i) {
    const std::string name = list[i].name;
    uint32_t matches = 0;
    for (const Needs& row : rows) {
      const std::string kind = row.kind;
      if (name.size() < kind.size() || name.substr(name.size() - kind.size()) != kind) continue;
      EXPECT_EQ(list[i].needs, row.features) << name;
      ++matches;
    }
    EXPECT_EQ(matches, 1u) << name;
  }
}

TEST(KernelNeeds, AesKernelsAskForTheirInstructions) {
  ExpectNeeds(kAesExpansionKernels, kAesNeeds);
  ExpectNeeds(kAesEncryptKernels, kAesNeeds);
  ExpectNeeds(kAesDecryptKernels, kAesNeeds);
}

TEST(KernelNeeds, DesKernelsAskForTheirInstructions) {
  ExpectNeeds(kDesEncryptKernels, kDesNeeds);
  ExpectNeeds(kDesDecryptKernels, kDesNeeds);
}

}  // namespace
}  // namespace mirolta
