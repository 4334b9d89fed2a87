// The tables of limb kernels, for the list and for tests.
#pragma once

#include "limb_kernels.h"

namespace mirolta {

// kWideKernels computes products in a double limb, kHalfKernels from half limbs.
extern const LimbKernels kWideKernels;
extern const LimbKernels kHalfKernels;

#if MIROLTA_KERNELS_FOR(ARM)
extern const LimbKernels kArmKernels;
#endif

#if MIROLTA_KERNELS_FOR(X86_64)
// kMulxAdxKernels needs kFeatureBmi2Adx.
extern const LimbKernels kMulxAdxKernels;

// MultiplyMulxAdx is its schoolbook product, by blocks of four and eight rows.
void MultiplyMulxAdx(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n);

// MontgomeryShortAdx is its Montgomery multiplication, for 2, 3, 4, 6 and 8 limbs.
bool MontgomeryShortAdx(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n,
                        Limb inverse);
#endif

#if MIROLTA_KERNELS_FOR(X86_32)
// kMulxKernels needs kFeatureBmi2Adx, kMulxAvx2Kernels kFeatureAvx2 too; kMulSse2Kernels needs kFeatureSse2;
// kMulKernels runs on every processor.
extern const LimbKernels kMulxAvx2Kernels;
extern const LimbKernels kMulxKernels;
extern const LimbKernels kMulSse2Kernels;
extern const LimbKernels kMulKernels;
#endif

#if MIROLTA_KERNELS_FOR(AARCH64)
// kUmulhKernels runs on every processor of the architecture.
extern const LimbKernels kUmulhKernels;
#endif

}  // namespace mirolta
