#include "aes_kernels.h"

namespace mirolta {

namespace {

constexpr Kernel<AesTransform> kEncryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"aes-encrypt-aesni", kFeatureSsse3 | kFeatureAesNi, AesEncryptAesNi},
#endif
    {"aes-encrypt-portable", 0, AesEncryptPortable},
};

constexpr Kernel<AesTransform> kDecryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"aes-decrypt-aesni", kFeatureSsse3 | kFeatureAesNi, AesDecryptAesNi},
#endif
    {"aes-decrypt-portable", 0, AesDecryptPortable},
};

}  // namespace

AesKernelList AesEncryptKernels() noexcept {
  return {kEncryptKernels, sizeof kEncryptKernels / sizeof kEncryptKernels[0]};
}

AesKernelList AesDecryptKernels() noexcept {
  return {kDecryptKernels, sizeof kDecryptKernels / sizeof kDecryptKernels[0]};
}

AesTransform ChosenAesEncrypt() noexcept {
  static const AesTransform chosen = ChooseKernel(kEncryptKernels, ProcessorFeatures()).function;
  return chosen;
}

AesTransform ChosenAesDecrypt() noexcept {
  static const AesTransform chosen = ChooseKernel(kDecryptKernels, ProcessorFeatures()).function;
  return chosen;
}

}  // namespace mirolta
