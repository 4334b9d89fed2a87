// Which kernels are chosen on ARM processors with and without instructions of their own. The program
// takes the system's place: MIROLTA_TEST_CAPABILITIES is its list of the processor's capabilities.
#include <gtest/gtest.h>
#include <sys/auxv.h>

#include <cstdlib>

#include "aes_kernels.h"
#include "hash_kernels.h"
#include "seam/processor_report.h"

namespace {

// All of them, where the variable is not set.
unsigned long ListedCapabilities() {
  const char* const listed = std::getenv("MIROLTA_TEST_CAPABILITIES");
  return listed == nullptr ? ~0ul : std::strtoul(listed, nullptr, 0);
}

}  // namespace

extern "C" unsigned long getauxval(unsigned long type) noexcept {
  return type == AT_HWCAP ? ListedCapabilities() : 0;
}

namespace mirolta {
namespace {

#if defined(__arm__)

TEST(KernelChoiceTest, TakesInstructionsThatTheSystemLists) {
  const bool has_neon = (ListedCapabilities() & 0x1000) != 0;
  EXPECT_EQ(CurrentKernel<kSha1Kernels>(), has_neon ? Sha1Neon : Sha1Portable);
  EXPECT_EQ(CurrentKernel<kSha256Kernels>(), has_neon ? Sha256Neon : Sha256Portable);
  // The rows of finishing are in the order of those of compression.
  const size_t row = has_neon ? 0 : 1;
  EXPECT_EQ(CurrentKernel<kSha1FinishKernels>(), kSha1FinishKernels[row].function);
  EXPECT_EQ(CurrentKernel<kSha256FinishKernels>(), kSha256FinishKernels[row].function);
}

#else

TEST(KernelChoiceTest, TakesInstructionsThatTheSystemLists) {
  const unsigned long listed = ListedCapabilities();
  const bool has_aes = (listed & 0x08) != 0;
  const bool has_sha1 = (listed & 0x20) != 0;
  const bool has_sha2 = (listed & 0x40) != 0;
  EXPECT_EQ(CurrentKernel<kAesExpansionKernels>(), has_aes ? AesExpandArmv8 : AesExpandPortable);
  EXPECT_EQ(CurrentKernel<kAesEncryptKernels>(), has_aes ? AesEncryptArmv8 : AesEncryptPortable);
  EXPECT_EQ(CurrentKernel<kAesDecryptKernels>(), has_aes ? AesDecryptArmv8 : AesDecryptPortable);
  EXPECT_EQ(CurrentKernel<kSha1Kernels>(), has_sha1 ? Sha1Armv8 : Sha1Portable);
  EXPECT_EQ(CurrentKernel<kSha256Kernels>(), has_sha2 ? Sha256Armv8 : Sha256Portable);
  EXPECT_EQ(CurrentKernel<kSha1FinishKernels>() == Sha1Armv8Finish, has_sha1);
  EXPECT_EQ(CurrentKernel<kSha256FinishKernels>() == Sha256Armv8Finish, has_sha2);
}

#endif

}  // namespace
}  // namespace mirolta
