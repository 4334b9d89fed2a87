#include "des_kernels.h"

#include "seam/neon.h"

namespace mirolta {

namespace {

[[maybe_unused]] constexpr uint32_t kNeedsGfni = kFeatureGfni | kFeatureBmi2Adx;

constexpr Kernel<DesTransform> kEncryptRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"des-encrypt-avx512", kFeatureAvx512 | kNeedsGfni, DesEncryptAvx512},
    {"des-encrypt-avx2", kFeatureAvx2, DesEncryptAvx2},
#endif
#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_DES_SSE2
    {"des-encrypt-sse2", kFeatureSse2, DesEncryptSse2},
#endif
#if MIROLTA_KERNELS_FOR(X86_64)
    {"des-encrypt-gfni", kNeedsGfni, DesEncryptGfni},
    {"des-encrypt-words64", 0, DesEncryptWords64},
#endif
#if MIROLTA_KERNELS_FOR(NEON)
    {"des-encrypt-neon", kNeedsNeon, DesEncryptNeon},
#endif
#if MIROLTA_KERNELS_FOR(ARM)
    {"des-encrypt-arm", 0, DesEncryptArm},
#endif
    {"des-encrypt-portable", 0, DesEncryptPortable},
};

constexpr Kernel<DesTransform> kDecryptRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"des-decrypt-avx512", kFeatureAvx512 | kNeedsGfni, DesDecryptAvx512},
    {"des-decrypt-avx2", kFeatureAvx2, DesDecryptAvx2},
#endif
#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_DES_SSE2
    {"des-decrypt-sse2", kFeatureSse2, DesDecryptSse2},
#endif
#if MIROLTA_KERNELS_FOR(X86_64)
    {"des-decrypt-gfni", kNeedsGfni, DesDecryptGfni},
    {"des-decrypt-words64", 0, DesDecryptWords64},
#endif
#if MIROLTA_KERNELS_FOR(NEON)
    {"des-decrypt-neon", kNeedsNeon, DesDecryptNeon},
#endif
#if MIROLTA_KERNELS_FOR(ARM)
    {"des-decrypt-arm", 0, DesDecryptArm},
#endif
    {"des-decrypt-portable", 0, DesDecryptPortable},
};

}  // namespace

constinit const KernelList<DesTransform> kDesEncryptKernels = kEncryptRows;
constinit const KernelList<DesTransform> kDesDecryptKernels = kDecryptRows;

}  // namespace mirolta
