#include "limb_kernels.h"

#include "limb_kernel_tables.h"

namespace mirolta {

namespace {

// Both portable tables are correct everywhere. Which one is faster depends on the multiplier and is
// decided at build time.
constexpr Kernel<const LimbKernels*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"mulx-adx", kFeatureBmi2Adx, &kMulxAdxKernels},
#endif
#if MIROLTA_KERNELS_FOR(X86_32)
    {"mulx-avx2", kFeatureBmi2Adx | kFeatureAvx2, &kMulxAvx2Kernels},
    {"mulx", kFeatureBmi2Adx, &kMulxKernels},
    {"mul-sse2", kFeatureSse2, &kMulSse2Kernels},
    {"mul", 0, &kMulKernels},
#endif
#if MIROLTA_KERNELS_FOR(ARM)
    {"arm", 0, &kArmKernels},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    {"umulh", 0, &kUmulhKernels},
#endif
#if defined(MIROLTA_HALF_PRODUCTS)
    {"half products", 0, &kHalfKernels},
    {"wide products", 0, &kWideKernels},
#else
    {"wide products", 0, &kWideKernels},
    {"half products", 0, &kHalfKernels},
#endif
};

}  // namespace

constinit const KernelList<const LimbKernels*> kLimbKernels = kRows;

const LimbKernels& CurrentLimbKernels() noexcept {
  return *CurrentKernel<kLimbKernels>();
}

}  // namespace mirolta
