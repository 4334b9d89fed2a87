#include "fermat_test.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "montgomery.h"
#include "montgomery_power.h"
#include "power_kernels.h"
#include "power_modulo.h"

namespace mirolta {

bool TwoToPowerIsOne(bool* result, const Limb* e, size_t en, const Limb* m, size_t n) noexcept {
  const PowerMethod& method = ChoosePower(LimbBits(m, n), ProcessorFeatures());
  if (method.function != MontgomeryPower) {
    // Its products are so much faster that the general exponentiation is faster than doubling.
    LimbScratch memory(2 * CheckedSize(n));
    if (memory.Get() == nullptr) return false;
    Limb* const two = memory.Get();
    Limb* const power = two + n;
    ZeroLimbs(two, n);
    two[0] = 2;
    if (!method.function(power, two, e, en, m, n)) return false;
    *result = power[0] == 1 && SignificantLimbs(power, n) == 1;
    return true;
  }
  const LimbKernels& k = CurrentLimbKernels();
  const MontgomeryModulus modulus = PrepareMontgomery(m, n);
  LimbScratch memory(2 * CheckedSize(n) + MontgomeryScratch(n));
  if (memory.Get() == nullptr) return false;
  Limb* const one = memory.Get();
  Limb* const power = one + n;
  Limb* const scratch = power + n;
  const Limb unit = 1;
  if (!ToMontgomery(one, &unit, 1, modulus)) return false;
  CopyLimbs(power, one, n);
  for (size_t i = LimbBits(e, en); i-- != 0;) {
    MontgomeryMultiply(power, power, power, modulus, scratch);
    if (!TestLimbBit(e, i)) continue;
    const Limb over = k.add(power, power, power, n);
    if (over != 0 || CompareLimbs(power, m, n) >= 0) k.subtract(power, power, m, n);
  }
  *result = CompareLimbs(power, one, n) == 0;
  return true;
}

bool FermatTest(bool* result, const Limb* m, size_t n, Limb* spare) noexcept {
  // Not 1, and no even number: 2 to any power above 0 stays even modulo it.
  if ((m[0] & 1) == 0 || (n == 1 && m[0] == 1)) {
    *result = false;
    return true;
  }
  LimbScratch power{CheckedSize(n)};
  if (power.Get() == nullptr) return false;
  CopyLimbs(spare, m, n);
  spare[0] -= 1;
  const size_t en = SignificantLimbs(spare, n);
  bool one = false;
  if (!TwoToPowerIsOne(&one, spare, en, m, n)) return false;
  for (size_t i = 0; one && i < kOtherBaseCount; ++i) {
    if (!PowerModulo(power.Get(), &kOtherBases[i], 1, spare, en, m, n)) return false;
    one = power.Get()[0] == 1 && SignificantLimbs(power.Get(), n) == 1;
  }
  *result = one;
  return true;
}

}  // namespace mirolta
