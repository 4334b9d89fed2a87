#include "aes_kernels.h"

namespace mirolta {

namespace {

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
constexpr uint32_t kNeedsAesNi = kFeatureSsse3 | kFeatureAesNi;
constexpr uint32_t kNeedsVaes256 = kNeedsAesNi | kFeatureAvx2 | kFeatureVaes;
constexpr uint32_t kNeedsVaes512 = kNeedsVaes256 | kFeatureAvx512;
#endif

constexpr Kernel<AesExpansion> kExpansionKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"aes-expand-aesni", kNeedsAesNi, AesExpandAesNi},
#endif
    {"aes-expand-portable", 0, AesExpandPortable},
};

constexpr Kernel<AesTransform> kEncryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"aes-encrypt-vaes512", kNeedsVaes512, AesEncryptVaes512},
    {"aes-encrypt-vaes256", kNeedsVaes256, AesEncryptVaes256},
    {"aes-encrypt-aesni", kNeedsAesNi, AesEncryptAesNi},
#endif
    {"aes-encrypt-portable", 0, AesEncryptPortable},
};

constexpr Kernel<AesTransform> kDecryptKernels[] = {
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
    {"aes-decrypt-vaes512", kNeedsVaes512, AesDecryptVaes512},
    {"aes-decrypt-vaes256", kNeedsVaes256, AesDecryptVaes256},
    {"aes-decrypt-aesni", kNeedsAesNi, AesDecryptAesNi},
#endif
    {"aes-decrypt-portable", 0, AesDecryptPortable},
};

}  // namespace

bool ExpandAesKey(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule) noexcept {
  if (byte_length != 16 && byte_length != 24 && byte_length != 32) return false;
  static const AesExpansion chosen = ChooseKernel(kExpansionKernels, ProcessorFeatures()).function;
  chosen(key, byte_length, schedule);
  return true;
}

AesExpansionList AesExpansionKernels() noexcept {
  return {kExpansionKernels, sizeof kExpansionKernels / sizeof kExpansionKernels[0]};
}

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
