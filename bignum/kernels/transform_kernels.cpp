#include "transform_kernels.h"

#include "transform_kernel_tables.h"

namespace mirolta {

namespace {

constexpr Kernel<const TransformKernels*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"ifma", kIfmaTransformFeatures, &kIfmaTransforms},
#endif
    {"portable", 0, &kPortableTransforms},
};

}  // namespace

constinit const KernelList<const TransformKernels*> kTransformKernels = kRows;

const TransformKernels& CurrentTransformKernels() noexcept {
  return *CurrentKernel<kTransformKernels>();
}

}  // namespace mirolta
