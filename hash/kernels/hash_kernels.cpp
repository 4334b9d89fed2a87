#include "hash_kernels.h"

namespace mirolta {

namespace {

constexpr Kernel<CompressBlocks> kMd5Kernels[] = {
    {"md5-portable", 0, Md5Portable},
};

constexpr Kernel<CompressBlocks> kSha1Kernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"sha1-shani", kFeatureSsse3 | kFeatureSha, Sha1ShaNi},
#endif
    {"sha1-portable", 0, Sha1Portable},
};

constexpr Kernel<CompressBlocks> kSha256Kernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"sha256-shani", kFeatureSsse3 | kFeatureSha, Sha256ShaNi},
#endif
    {"sha256-portable", 0, Sha256Portable},
};

constexpr Kernel<FinishDigest> kSha1Finishes[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"sha1-shani", kFeatureSsse3 | kFeatureSha, Sha1ShaNiFinish},
#endif
    {"none", 0, nullptr},
};

constexpr Kernel<FinishDigest> kSha256Finishes[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"sha256-shani", kFeatureSsse3 | kFeatureSha, Sha256ShaNiFinish},
#endif
    {"none", 0, nullptr},
};

constexpr Kernel<FinishKeyedDigest> kSha256KeyedFinishes[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"sha256-shani", kFeatureSsse3 | kFeatureSha, Sha256ShaNiFinishKeyed},
#endif
    {"none", 0, nullptr},
};

template <size_t kCount>
constexpr HashKernelList ListOf(const Kernel<CompressBlocks> (&kernels)[kCount]) {
  return {kernels, kCount};
}

}  // namespace

HashKernelList Md5Kernels() noexcept {
  return ListOf(kMd5Kernels);
}
HashKernelList Sha1Kernels() noexcept {
  return ListOf(kSha1Kernels);
}
HashKernelList Sha256Kernels() noexcept {
  return ListOf(kSha256Kernels);
}

CompressBlocks ChosenMd5() noexcept {
  static const CompressBlocks chosen = ChooseKernel(kMd5Kernels, ProcessorFeatures()).function;
  return chosen;
}
CompressBlocks ChosenSha1() noexcept {
  static const CompressBlocks chosen = ChooseKernel(kSha1Kernels, ProcessorFeatures()).function;
  return chosen;
}
CompressBlocks ChosenSha256() noexcept {
  static const CompressBlocks chosen = ChooseKernel(kSha256Kernels, ProcessorFeatures()).function;
  return chosen;
}
FinishDigest ChosenSha1Finish() noexcept {
  static const FinishDigest chosen = ChooseKernel(kSha1Finishes, ProcessorFeatures()).function;
  return chosen;
}
FinishDigest ChosenSha256Finish() noexcept {
  static const FinishDigest chosen = ChooseKernel(kSha256Finishes, ProcessorFeatures()).function;
  return chosen;
}
FinishKeyedDigest ChosenSha256FinishKeyed() noexcept {
  static const FinishKeyedDigest chosen =
      ChooseKernel(kSha256KeyedFinishes, ProcessorFeatures()).function;
  return chosen;
}

}  // namespace mirolta
