// The kernel tables by name, for the list and for tests.
#pragma once

#include "limb_kernels.h"

namespace mirolta {

// kWideKernels forms products in a double limb, kHalfKernels from half limbs.
extern const LimbKernels kWideKernels;
extern const LimbKernels kHalfKernels;

#if MIROLTA_KERNELS_FOR(X86_64)
// kMulxAdxKernels needs kFeatureBmi2Adx.
extern const LimbKernels kMulxAdxKernels;

// Its products, by blocks of rows.
void MultiplyMulxAdx(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n);

// Its products in Montgomery's form, for 2, 3, 4, 6 and 8 limbs.
bool MontgomeryShortAdx(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n,
                        Limb inverse);
#endif

}  // namespace mirolta
