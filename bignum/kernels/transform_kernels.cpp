#include "transform_kernels.h"

#include "transform_kernel_tables.h"

namespace mirolta {

namespace {

constexpr Kernel<const TransformKernels*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"ifma", kIfmaTransformFeatures, &kIfmaTransforms},
    {"avx2", kAvx2TransformFeatures, &kAvx2Transforms},
#endif
    {"portable", 0, kLimbBits == 64 ? &kPortableTransforms : &kPairTransforms},
};

}  // namespace

constinit const KernelList<const TransformKernels*> kTransformKernels = kRows;

const TransformKernels& CurrentTransformKernels() noexcept {
  return *CurrentKernel<kTransformKernels>();
}

}  // namespace mirolta
