// The tables of transform kernels, for the list.
#pragma once

#include "transform_kernels.h"

namespace mirolta {

extern const TransformKernels kPortableTransforms;
// The portable one where limbs have 32 bits: a product of 64 bits costs so many of 32 that pairs are faster.
extern const TransformKernels kPairTransforms;

#if MIROLTA_KERNELS_FOR(X86_64)
// kIfmaTransforms needs kIfmaTransformFeatures.
inline constexpr uint32_t kIfmaTransformFeatures = kFeatureAvx512 | kFeatureAvx512Ifma;
extern const TransformKernels kIfmaTransforms;
// kAvx2Transforms needs kAvx2TransformFeatures.
inline constexpr uint32_t kAvx2TransformFeatures = kFeatureAvx2;
extern const TransformKernels kAvx2Transforms;
#endif

}  // namespace mirolta
