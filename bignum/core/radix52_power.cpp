#include "radix52_power.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include "divide.h"
  #include "limb_scratch.h"
  #include "radix52.h"
  #include "radix52_scratch.h"
  #include "sliding_window.h"

namespace mirolta {

namespace {

// z[count] := x * 2^(52 count) mod m in radix-2^52 digits.
// Shapes: x[n], m[n], m[n - 1] != 0.
bool ToRadix52Montgomery(Digit52* z, size_t count, const Limb* x, const Limb* m, size_t n) {
  const size_t bits = count * kRadix52Bits;
  const size_t zeros = bits / kLimbBits;
  LimbScratch shifted(CheckedSize(zeros) + CheckedSize(n) + 1);
  LimbScratch residue{CheckedSize(n)};
  if (shifted.Get() == nullptr || residue.Get() == nullptr) return false;
  ZeroLimbs(shifted.Get(), zeros);
  Limb* const top = shifted.Get() + zeros;
  top[n] = ShiftLeftLimbs(top, x, n, bits % kLimbBits);
  if (!DivideLimbs(nullptr, residue.Get(), shifted.Get(), zeros + n + 1, m, n)) return false;
  ToRadix52(z, count, residue.Get(), n);
  return true;
}

}  // namespace

bool Radix52Power(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                  size_t n) noexcept {
  n = SignificantLimbs(m, n);
  const size_t count = Radix52Count(LimbBits(m, n), kRadix52Spare);
  const size_t vectors = (count + kRadix52PerVector - 1) / kRadix52PerVector;
  const size_t padded = vectors * kRadix52PerVector;
  const uint32_t window = WindowBits(LimbBits(e, en));
  const size_t table_digits = padded << (window - 1);
  Radix52Scratch memory(CheckedSize(table_digits) + 4 * CheckedSize(padded));
  LimbScratch limbs(CheckedSize(n) + kRadix52DigitLimbs);
  Digit52* const digits = memory.Get();
  if (digits == nullptr || limbs.Get() == nullptr) return false;
  Digit52* const power = digits + 2 * padded;
  Digit52* const spare = power + padded;
  Digit52* const table = spare + padded;

  const Radix52Modulus modulus = ToRadix52Modulus(digits, padded, m, n, limbs.Get());
  for (size_t i = count; i < padded; ++i) table[i] = 0;
  if (!ToRadix52Montgomery(table, count, x, m, n)) return false;
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
