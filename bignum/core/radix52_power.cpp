#include "radix52_power.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include "limb_scratch.h"
  #include "radix52.h"
  #include "radix52_scratch.h"
  #include "shifted_residue.h"
  #include "sliding_window.h"

namespace mirolta {

bool Radix52Power(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                  size_t n) noexcept {
  n = SignificantLimbs(m, n);
  const size_t count = Radix52Count(LimbBits(m, n), kRadix52Spare);
  const size_t vectors = Radix52Vectors(count);
  const size_t padded = vectors * kRadix52PerVector;
  const uint32_t window = WindowBits(LimbBits(e, en));
  const size_t table_digits = padded << (window - 1);
  Radix52Scratch memory(CheckedSize(table_digits) +
                        (kRadix52ModulusNumbers + 2) * CheckedSize(padded));
  LimbScratch limbs(CheckedSize(n) + kRadix52DigitLimbs);
  Digit52* const digits = memory.Get();
  if (digits == nullptr || limbs.Get() == nullptr) return false;
  Digit52* const power = digits + kRadix52ModulusNumbers * padded;
  Digit52* const spare = power + padded;
  Digit52* const table = spare + padded;

  const Radix52Modulus modulus = ToRadix52Modulus(digits, padded, m, n, limbs.Get());
  for (size_t i = count; i < padded; ++i) table[i] = 0;
  if (!ShiftedResidue(limbs.Get(), x, count * kRadix52Bits, m, n)) return false;
  ToRadix52(table, count, limbs.Get(), n);
  const Radix52Product product = Radix52ProductFor(vectors);
  SlidingWindow(
      power, table, spare, e, en, padded, window,
      [=](Digit52* r, const Digit52* a, const Digit52* b) { product(r, a, b, modulus, count); });
  spare[0] = 1;
  for (size_t i = 1; i < padded; ++i) spare[i] = 0;
  product(power, power, spare, modulus, count);
  LeaveRadix52(z, power, count, m, n, limbs.Get());
  return true;
}

}  // namespace mirolta

#endif
