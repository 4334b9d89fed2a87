#include "montgomery.h"

#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"

namespace mirolta {

Limb LimbInverse(Limb m) noexcept {
  // Newton's iteration: m is its own inverse mod 8, three correct bits, and each step doubles them.
  Limb inverse = m;
  for (uint32_t bits = 3; bits < kLimbBits; bits *= 2) {
    inverse = static_cast<Limb>(inverse * (2 - m * inverse));
  }
  return inverse;
}

MontgomeryModulus PrepareMontgomery(const Limb* m, size_t n) noexcept {
  return {m, n, static_cast<Limb>(0 - LimbInverse(m[0]))};
}

CheckedSize MontgomeryScratch(size_t n) noexcept {
  return 2 * CheckedSize(n) + MultiplyScratch(n, n);
}

void MontgomeryMultiply(Limb* z, const Limb* x, const Limb* y, const MontgomeryModulus& modulus,
                        Limb* scratch) noexcept {
  const size_t n = modulus.n;
  const LimbKernels& k = CurrentLimbKernels();
  if (k.montgomery(z, x, y, modulus.m, n, modulus.inverse)) return;
  MultiplyLimbs(scratch, x, n, y, n, scratch + 2 * n);
  k.reduce(z, scratch, modulus.m, n, modulus.inverse);
}

void FromMontgomery(Limb* z, const Limb* x, const MontgomeryModulus& modulus,
                    Limb* scratch) noexcept {
  const size_t n = modulus.n;
  CopyLimbs(scratch, x, n);
  ZeroLimbs(scratch + n, n);
  CurrentLimbKernels().reduce(z, scratch, modulus.m, n, modulus.inverse);
}

bool ToMontgomery(Limb* z, const Limb* x, size_t count, const MontgomeryModulus& modulus) noexcept {
  const size_t n = modulus.n;
  LimbScratch memory(CheckedSize(n) + CheckedSize(count));
  if (memory.Get() == nullptr) return false;
  ZeroLimbs(memory.Get(), n);
  CopyLimbs(memory.Get() + n, x, count);
  return DivideLimbs(nullptr, z, memory.Get(), n + count, modulus.m, n);
}

}  // namespace mirolta
