#include "limb_kernels.h"

#include "limb_kernel_tables.h"

namespace mirolta {

namespace {

// Both portable tables are right everywhere; which of them is faster depends on the multiplier and
// is settled when the system is built.
constexpr Kernel<const LimbKernels*> kKernels[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"mulx-adx", kFeatureBmi2Adx, &kMulxAdxKernels},
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

LimbKernelList AllLimbKernels() noexcept {
  return {kKernels, sizeof kKernels / sizeof kKernels[0]};
}

const LimbKernels& CurrentLimbKernels() noexcept {
  static const LimbKernels& chosen = *ChooseKernel(kKernels, ProcessorFeatures()).function;
  return chosen;
}

}  // namespace mirolta
