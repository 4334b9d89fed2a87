#include "hash_kernels.h"

#include "finish_in_memory.h"

namespace mirolta {

namespace {

[[maybe_unused]] constexpr uint32_t kNeedsShaNi = kFeatureSsse3 | kFeatureSha;

constexpr Kernel<CompressBlocks> kMd5Rows[] = {
    {"md5-portable", 0, Md5Portable},
};

constexpr Kernel<CompressBlocks> kSha1Rows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sha1-shani", kNeedsShaNi, Sha1ShaNi},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"sha1-armv8", kFeatureArmSha1, Sha1Armv8},
#endif
#if MIROLTA_KERNELS_FOR(ARMV7)
    {"sha1-neon", kFeatureNeon, Sha1Neon},
#endif
    {"sha1-portable", 0, Sha1Portable},
};

constexpr Kernel<CompressBlocks> kSha256Rows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sha256-shani", kNeedsShaNi, Sha256ShaNi},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"sha256-armv8", kFeatureArmSha2, Sha256Armv8},
#endif
#if MIROLTA_KERNELS_FOR(ARMV7)
    {"sha256-neon", kFeatureNeon, Sha256Neon},
#endif
    {"sha256-portable", 0, Sha256Portable},
};

constexpr Kernel<FinishDigest> kMd5FinishRows[] = {
    {"md5-finish-portable", 0, FinishInMemory<Md5Portable, 4, false>},
};

constexpr Kernel<FinishDigest> kSha1FinishRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sha1-finish-shani", kNeedsShaNi, Sha1ShaNiFinish},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"sha1-finish-armv8", kFeatureArmSha1, Sha1Armv8Finish},
#endif
#if MIROLTA_KERNELS_FOR(ARMV7)
    {"sha1-finish-neon", kFeatureNeon, FinishInMemory<Sha1Neon, 5, true>},
#endif
    {"sha1-finish-portable", 0, FinishInMemory<Sha1Portable, 5, true>},
};

constexpr Kernel<FinishDigest> kSha256FinishRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sha256-finish-shani", kNeedsShaNi, Sha256ShaNiFinish},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"sha256-finish-armv8", kFeatureArmSha2, Sha256Armv8Finish},
#endif
#if MIROLTA_KERNELS_FOR(ARMV7)
    {"sha256-finish-neon", kFeatureNeon, FinishInMemory<Sha256Neon, 8, true>},
#endif
    {"sha256-finish-portable", 0, FinishInMemory<Sha256Portable, 8, true>},
};

constexpr Kernel<FinishKeyedDigest> kSha256FinishKeyedRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sha256-finish-keyed-shani", kNeedsShaNi, Sha256ShaNiFinishKeyed},
#endif
    {"none", 0, nullptr},
};

}  // namespace

constinit const KernelList<CompressBlocks> kMd5Kernels = kMd5Rows;
constinit const KernelList<CompressBlocks> kSha1Kernels = kSha1Rows;
constinit const KernelList<CompressBlocks> kSha256Kernels = kSha256Rows;
constinit const KernelList<FinishDigest> kMd5FinishKernels = kMd5FinishRows;
constinit const KernelList<FinishDigest> kSha1FinishKernels = kSha1FinishRows;
constinit const KernelList<FinishDigest> kSha256FinishKernels = kSha256FinishRows;
constinit const KernelList<FinishKeyedDigest> kSha256FinishKeyedKernels = kSha256FinishKeyedRows;

}  // namespace mirolta
