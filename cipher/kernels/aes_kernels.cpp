#include "aes_kernels.h"

#include "seam/neon.h"

namespace mirolta {

namespace {

[[maybe_unused]] constexpr uint32_t kNeedsAesNi = kFeatureSsse3 | kFeatureAesNi;
[[maybe_unused]] constexpr uint32_t kNeedsVaes256 = kNeedsAesNi | kFeatureAvx2 | kFeatureVaes;
[[maybe_unused]] constexpr uint32_t kNeedsVaes512 = kNeedsVaes256 | kFeatureAvx512;

constexpr Kernel<AesExpansion> kExpansionRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"aes-expand-aesni", kNeedsAesNi, AesExpandAesNi},
#endif
#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_AES_SSE2
    {"aes-expand-sse2", kFeatureSse2, AesExpandSse2},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"aes-expand-armv8", kFeatureArmAes, AesExpandArmv8},
#endif
#if MIROLTA_AES_TABLES
    {"aes-expand-portable", 0, AesExpandPortable},
#else
    {"aes-expand-compact", 0, AesExpandCompact},
#endif
};

constexpr Kernel<AesTransform> kEncryptRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"aes-encrypt-vaes512", kNeedsVaes512, AesEncryptVaes512},
    {"aes-encrypt-vaes256", kNeedsVaes256, AesEncryptVaes256},
    {"aes-encrypt-aesni", kNeedsAesNi, AesEncryptAesNi},
#endif
#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_AES_SSE2
    {"aes-encrypt-sse2", kFeatureSse2, AesEncryptSse2},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"aes-encrypt-armv8", kFeatureArmAes, AesEncryptArmv8},
#endif
#if MIROLTA_KERNELS_FOR(NEON)
    {"aes-encrypt-neon", kNeedsNeon, AesEncryptNeon},
#endif
#if MIROLTA_KERNELS_FOR(ARM) && MIROLTA_AES_TABLES
    {"aes-encrypt-arm", 0, AesEncryptArm},
#endif
#if MIROLTA_AES_TABLES
    {"aes-encrypt-portable", 0, AesEncryptPortable},
#else
    {"aes-encrypt-compact", 0, AesEncryptCompact},
#endif
};

constexpr Kernel<AesTransform> kDecryptRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"aes-decrypt-vaes512", kNeedsVaes512, AesDecryptVaes512},
    {"aes-decrypt-vaes256", kNeedsVaes256, AesDecryptVaes256},
    {"aes-decrypt-aesni", kNeedsAesNi, AesDecryptAesNi},
#endif
#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_AES_SSE2
    {"aes-decrypt-sse2", kFeatureSse2, AesDecryptSse2},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"aes-decrypt-armv8", kFeatureArmAes, AesDecryptArmv8},
#endif
#if MIROLTA_KERNELS_FOR(NEON)
    {"aes-decrypt-neon", kNeedsNeon, AesDecryptNeon},
#endif
#if MIROLTA_KERNELS_FOR(ARM) && MIROLTA_AES_TABLES
    {"aes-decrypt-arm", 0, AesDecryptArm},
#endif
#if MIROLTA_AES_TABLES
    {"aes-decrypt-portable", 0, AesDecryptPortable},
#else
    {"aes-decrypt-compact", 0, AesDecryptCompact},
#endif
};

}  // namespace

constinit const KernelList<AesExpansion> kAesExpansionKernels = kExpansionRows;
constinit const KernelList<AesTransform> kAesEncryptKernels = kEncryptRows;
constinit const KernelList<AesTransform> kAesDecryptKernels = kDecryptRows;

bool ExpandAesKey(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule) noexcept {
  if (byte_length != 16 && byte_length != 24 && byte_length != 32) return false;
  CurrentKernel<kAesExpansionKernels>()(key, byte_length, schedule);
  return true;
}

}  // namespace mirolta
