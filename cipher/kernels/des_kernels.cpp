#include "des_kernels.h"

namespace mirolta {

namespace {

constexpr Kernel<DesTransform> kEncryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"des-encrypt-avx512", kFeatureAvx512 | kFeatureGfni, DesEncryptAvx512},
    {"des-encrypt-avx2", kFeatureAvx2, DesEncryptAvx2},
    {"des-encrypt-gfni", kFeatureGfni, DesEncryptGfni},
    {"des-encrypt-words64", 0, DesEncryptWords64},
#endif
    {"des-encrypt-portable", 0, DesEncryptPortable},
};

constexpr Kernel<DesTransform> kDecryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"des-decrypt-avx512", kFeatureAvx512 | kFeatureGfni, DesDecryptAvx512},
    {"des-decrypt-avx2", kFeatureAvx2, DesDecryptAvx2},
    {"des-decrypt-gfni", kFeatureGfni, DesDecryptGfni},
    {"des-decrypt-words64", 0, DesDecryptWords64},
#endif
    {"des-decrypt-portable", 0, DesDecryptPortable},
};

}  // namespace

DesKernelList DesEncryptKernels() noexcept {
  return {kEncryptKernels, sizeof kEncryptKernels / sizeof kEncryptKernels[0]};
}

DesKernelList DesDecryptKernels() noexcept {
  return {kDecryptKernels, sizeof kDecryptKernels / sizeof kDecryptKernels[0]};
}

DesTransform ChosenDesEncrypt() noexcept {
  static const DesTransform chosen = ChooseKernel(kEncryptKernels, ProcessorFeatures()).function;
  return chosen;
}

DesTransform ChosenDesDecrypt() noexcept {
  static const DesTransform chosen = ChooseKernel(kDecryptKernels, ProcessorFeatures()).function;
  return chosen;
}

}  // namespace mirolta
