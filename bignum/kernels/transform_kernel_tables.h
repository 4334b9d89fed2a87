// The tables of transform kernels, for the list.
#pragma once

#include "transform_kernels.h"

namespace mirolta {

extern const TransformKernels kPortableTransforms;

#if MIROLTA_KERNELS_FOR(X86_64)
// kIfmaTransforms needs kIfmaTransformFeatures.
inline constexpr uint32_t kIfmaTransformFeatures = kFeatureAvx512 | kFeatureAvx512Ifma;
extern const TransformKernels kIfmaTransforms;
#endif

}  // namespace mirolta
