#include "power_kernels.h"

#include "four_limb_power.h"
#include "montgomery_power.h"
#include "radix27_power.h"
#include "radix52_power.h"

namespace mirolta {

namespace {

constexpr PowerMethod kMontgomery = {0, SIZE_MAX, MontgomeryPower};
#if MIROLTA_KERNELS_FOR(X86)
constexpr PowerMethod kRadix52 = {kRadix52PowerLeastBits, kRadix52PowerMostBits, Radix52Power};
#endif
#if MIROLTA_KERNELS_FOR(X86_64)
constexpr PowerMethod kFourLimbs = {kFourLimbPowerLeastBits, kFourLimbPowerMostBits, FourLimbPower};
#endif

#if MIROLTA_KERNELS_FOR(X86_32)
template <const Radix27Kernels& kKernels>
constexpr PowerMethod kRadix27 = {
    kRadix27PowerLeastBits, kRadix27PowerMostBits,
    [](Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m, size_t n) {
      return Radix27Power(kKernels, z, x, e, en, m, n);
    }};
#endif

constexpr Kernel<const PowerMethod*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"ifma", kRadix52Features, &kRadix52},
#endif
#if MIROLTA_KERNELS_FOR(X86_32)
    {"avx2", kFeatureAvx2, &kRadix27<kRadix27Avx2>},
    {"sse2", kFeatureSse2, &kRadix27<kRadix27Sse2>},
#endif
#if MIROLTA_KERNELS_FOR(X86_64)
    {"four limbs", kFeatureBmi2Adx, &kFourLimbs},
#endif
    {"montgomery", 0, &kMontgomery},
};

}  // namespace

constinit const KernelList<const PowerMethod*> kPowerKernels = kRows;

const PowerMethod& ChoosePower(size_t modulus_bits, uint32_t features) noexcept {
  const Kernel<const PowerMethod*>* row = kPowerKernels.begin();
  const auto fits = [=](const Kernel<const PowerMethod*>& kernel) {
    return (kernel.needs & ~features) == 0 && modulus_bits >= kernel.function->least_bits &&
           modulus_bits <= kernel.function->most_bits;
  };
  // The last row, the portable one, takes every modulus.
  while (row + 1 != kPowerKernels.end() && !fits(*row)) ++row;
  return *row->function;
}

}  // namespace mirolta
