#include "power_modulo.h"

#include "limb_basics.h"
#include "divide.h"
#include "montgomery.h"
#include "multiply.h"
#include "radix52_power.h"
#include "limb_scratch.h"
#include "sliding_window.h"

namespace mirolta {

namespace {

constexpr PowerMethod kMontgomery = {0, SIZE_MAX, MontgomeryPower};
#if MIROLTA_KERNELS_FOR(X86_64)
constexpr PowerMethod kRadix52 = {kRadix52PowerLeastBits, kRadix52PowerMostBits, Radix52Power};
#endif

constexpr Kernel<const PowerMethod*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"ifma", kRadix52Features, &kRadix52},
#endif
    {"montgomery", 0, &kMontgomery},
};

// Arithmetic modulo 2^bits on values of n limbs.
struct PowerOfTwo {
  size_t bits;
  size_t n;
  Limb* scratch;  // ScratchLimbs(n)

  static CheckedSize ScratchLimbs(size_t n) {
    return 2 * CheckedSize(n) + MultiplyScratch(n, n);
  }

  void Cut(Limb* z) const {
    if (bits % kLimbBits != 0) z[n - 1] &= kLimbMax >> (kLimbBits - bits % kLimbBits);
  }
  // z := x * y mod B^count
  void MultiplyLow(Limb* z, const Limb* x, const Limb* y, size_t count) const {
    MultiplyLimbs(scratch, x, count, y, count, scratch + 2 * count);
    CopyLimbs(z, scratch, count);
  }
  // z := 1 / d by Newton's rule, doubling the right limbs each time. d[n] odd; spare[n].
  void Invert(Limb* z, const Limb* d, Limb* spare) const {
    z[0] = static_cast<Limb>(0 - PrepareMontgomery(d, 1).inverse);
    for (size_t right = 1; right < n;) {
      const size_t next = 2 * right < n ? 2 * right : n;
      ZeroLimbs(z + right, next - right);
      MultiplyLow(spare, d, z, next);
      // 2 - d z
      for (size_t i = 0; i < next; ++i) spare[i] = static_cast<Limb>(~spare[i]);
      AddLimb(spare, next, 3);
      MultiplyLow(z, z, spare, next);
      right = next;
    }
    Cut(z);
  }
};

// z := x^e mod 2^bits. Shapes: x[n], z[n], e[en] != 0.
bool PowerModuloPowerOfTwo(Limb* z, const Limb* x, const Limb* e, size_t en,
                           const PowerOfTwo& modulus) {
  const size_t n = modulus.n;
  size_t exponent_bits = LimbBits(e, en);
  ZeroLimbs(z, n);
  if ((x[0] & 1) == 0) {
    // x^e has at least e zero bits.
    uint64_t value = 0;
    for (size_t i = 0; i < exponent_bits && i < 63; ++i) {
      value |= (TestLimbBit(e, i) ? uint64_t{1} : 0) << i;
    }
    if (exponent_bits > 62 || value >= modulus.bits) return true;
  } else if (exponent_bits >= modulus.bits) {
    // The order of an odd number divides 2^(bits - 1).
    exponent_bits = modulus.bits - 1;
  }
  en = exponent_bits / kLimbBits + 1;
  LimbScratch exponent{CheckedSize(en)};
  if (exponent.Get() == nullptr) return false;
  for (size_t i = 0; i < en; ++i) {
    const size_t above = exponent_bits - i * kLimbBits;
    const Limb mask = above >= kLimbBits ? kLimbMax : static_cast<Limb>((Limb{1} << above) - 1);
    exponent.Get()[i] = mask == 0 ? 0 : e[i] & mask;
  }
  en = SignificantLimbs(exponent.Get(), en);
  if (en == 0) {
    z[0] = 1;
    return true;
  }
  const uint32_t window = WindowBits(LimbBits(exponent.Get(), en));
  const size_t powers = size_t{1} << (window - 1);
  LimbScratch table((CheckedSize(powers) + 1) * CheckedSize(n));
  if (table.Get() == nullptr) return false;
  CopyLimbs(table.Get(), x, n);
  SlidingWindow(
      z, table.Get(), table.Get() + powers * n, exponent.Get(), en, n, window,
      [&modulus, n](Limb* r, const Limb* a, const Limb* b) { modulus.MultiplyLow(r, a, b, n); });
  modulus.Cut(z);
  return true;
}

// z[n] := x[xn] mod d[n].
bool Residue(Limb* z, const Limb* x, size_t xn, const Limb* d, size_t n) {
  xn = SignificantLimbs(x, xn);
  if (xn < n) {
    CopyLimbs(z, x, xn);
    ZeroLimbs(z + xn, n - xn);
    return true;
  }
  return DivideLimbs(nullptr, z, x, xn, d, n);
}

bool PowerModuloOdd(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en, const Limb* m,
                       size_t n) {
  LimbScratch reduced{CheckedSize(n)};
  if (reduced.Get() == nullptr) return false;
  if (!Residue(reduced.Get(), x, xn, m, n)) return false;
  return ChoosePower(LimbBits(m, n), ProcessorFeatures())
      .function(z, reduced.Get(), e, en, m, n);
}

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

bool MontgomeryPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                    size_t n) noexcept {
  const MontgomeryModulus modulus = PrepareMontgomery(m, n);
  const uint32_t window = WindowBits(LimbBits(e, en));
  const size_t powers = size_t{1} << (window - 1);
  LimbScratch memory((CheckedSize(powers) + 1) * CheckedSize(n) + MontgomeryScratch(n));
  if (memory.Get() == nullptr) return false;
  Limb* const table = memory.Get();
  Limb* const spare = table + powers * n;
  Limb* const scratch = spare + n;
  if (!ToMontgomery(table, x, n, modulus)) return false;
  SlidingWindow(z, table, spare, e, en, n, window,
                [&modulus, scratch](Limb* r, const Limb* a, const Limb* b) {
                  MontgomeryMultiply(r, a, b, modulus, scratch);
                });
  FromMontgomery(z, z, modulus, scratch);
  return true;
}

bool PowerModulo(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en, const Limb* m,
                 size_t n) noexcept {
  if ((m[0] & 1) != 0) return PowerModuloOdd(z, x, xn, e, en, m, n);

  // m = 2^bits * d: work modulo each and join the residues.
  size_t zeros = 0;
  while (m[zeros] == 0) ++zeros;
  const uint32_t shift = TrailingZeros(m[zeros]);
  const size_t bits = zeros * kLimbBits + shift;
  const size_t k = (bits + kLimbBits - 1) / kLimbBits;
  LimbScratch memory(4 * CheckedSize(n) + 5 * CheckedSize(k) + PowerOfTwo::ScratchLimbs(k) +
                     MultiplyScratch(n, k));
  if (memory.Get() == nullptr) return false;
  Limb* const d = memory.Get();
  Limb* const odd_part = d + n;
  Limb* const d_low = odd_part + n;
  Limb* const two_part = d_low + k;
  Limb* const inverse = two_part + k;
  Limb* const low_x = inverse + k;
  Limb* const product = low_x + n + k;
  Limb* const scratch = product + n + k;
  const PowerOfTwo power_of_two = {bits, k, scratch};

  ShiftRightLimbs(d, m + zeros, n - zeros, shift);
  const size_t dn = SignificantLimbs(d, n - zeros);
  const size_t copied = xn < k ? xn : k;
  CopyLimbs(low_x, x, copied);
  ZeroLimbs(low_x + copied, k - copied);
  power_of_two.Cut(low_x);
  if (!PowerModuloPowerOfTwo(two_part, low_x, e, en, power_of_two)) return false;
  if (dn == 1 && d[0] == 1) {
    CopyLimbs(z, two_part, k);
    ZeroLimbs(z + k, n - k);
    return true;
  }
  if (!PowerModuloOdd(odd_part, x, xn, e, en, d, dn)) return false;

  // z = odd_part + d * ((two_part - odd_part) / d mod 2^bits), which is below m.
  for (size_t i = 0; i < k; ++i) d_low[i] = i < dn ? d[i] : 0;
  power_of_two.Invert(inverse, d_low, low_x);
  for (size_t i = 0; i < k; ++i) d_low[i] = i < dn ? odd_part[i] : 0;
  CurrentLimbKernels().subtract(two_part, two_part, d_low, k);
  power_of_two.MultiplyLow(two_part, two_part, inverse, k);
  power_of_two.Cut(two_part);
  MultiplyLimbs(product, d, dn, two_part, k, scratch);
  const Limb carry = CurrentLimbKernels().add(product, product, odd_part, dn);
  AddLimb(product + dn, k, carry);
  for (size_t i = 0; i < n; ++i) z[i] = i < dn + k ? product[i] : 0;
  return true;
}

bool TwoToPowerIsOne(bool* result, const Limb* e, size_t en, const Limb* m, size_t n) noexcept {
  const PowerMethod& method = ChoosePower(LimbBits(m, n), ProcessorFeatures());
  if (method.function != MontgomeryPower) {
    // Its products are so much faster that those for the window do not matter.
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

}  // namespace mirolta
