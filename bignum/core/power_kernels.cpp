#include "power_kernels.h"

#include "montgomery_power.h"
#include "radix52_power.h"

namespace mirolta {

namespace {

constexpr PowerMethod kMontgomery = {0, SIZE_MAX, MontgomeryPower};
#if MIROLTA_KERNELS_FOR(X86)
constexpr PowerMethod kRadix52 = {kRadix52PowerLeastBits, kRadix52PowerMostBits, Radix52Power};
#endif

constexpr Kernel<const PowerMethod*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"ifma", kRadix52Features, &kRadix52},
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
