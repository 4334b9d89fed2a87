#include "shifted_residue.h"

#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"

namespace mirolta {

bool ShiftedResidue(Limb* z, const Limb* x, size_t bits, const Limb* m, size_t n) noexcept {
  const size_t zeros = bits / kLimbBits;
  LimbScratch shifted(CheckedSize(zeros) + CheckedSize(n) + 1);
  if (shifted.Get() == nullptr) return false;
  ZeroLimbs(shifted.Get(), zeros);
  Limb* const top = shifted.Get() + zeros;
  top[n] = ShiftLeftLimbs(top, x, n, bits % kLimbBits);
  return DivideLimbs(nullptr, z, shifted.Get(), zeros + n + 1, m, n);
}

}  // namespace mirolta
