// Powers with secret exponents in radix 2^52.
#include "radix52_power.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include "limb_scratch.h"
  #include "radix52.h"
  #include "radix52_scratch.h"
  #include "secret_residues.h"
  #include "secret_window.h"

namespace mirolta {

namespace {

// One and base of one power as radix-2^52 digits, times 2^(52 count) modulo m.
// Shapes: one[padded], base[padded], memory[MemoryLimbs(n) + 2n].
void EnterRadix52(Digit52* one, Digit52* base, size_t count, size_t padded,
                  const SecretPower& power, Limb* memory) {
  const size_t n = power.n;
  Limb* const shift = memory;
  Limb* const residue = shift + n;
  SecretResidues residues(power.m, n, residue + n, power.square);
  residues.PowerOfTwo(shift, count * kRadix52Bits);
  residues.Enter(residue, power.x, power.xn);
  residues.Multiply(residue, residue, shift);
  residues.Leave(residue, residue);
  residues.Leave(shift, shift);
  ToRadix52(one, padded, shift, n);
  ToRadix52(base, padded, residue, n);
}

template <size_t kCount, typename Product>
bool RaiseInRadix52(const SecretPower* powers, size_t vectors, size_t count,
                    const Product& product) {
  const size_t padded = vectors * kRadix52PerVector;
  const size_t stride = kCount * padded;
  size_t limbs = 0, longest = 0, bits = 0;
  for (const SecretPower* power = powers; power != powers + kCount; ++power) {
    limbs = power->n > limbs ? power->n : limbs;
    bits = power->exponent_bits > bits ? power->exponent_bits : bits;
    longest = ExponentLimbs(power->en > longest ? power->en : longest, bits);
  }
  const uint32_t window = SplitWindowBits(bits);
  const CheckedSize table = WindowMemory(CheckedSize(stride), window);
  constexpr size_t kExponents = kCount + 1;  // the quotients, and one spare
  Radix52Scratch memory(table + 3 * CheckedSize(stride));
  LimbScratch limb_memory(SecretResidues::MemoryLimbs(limbs) + 2 * CheckedSize(limbs) +
                          CheckedSize(kExponents) * CheckedSize(longest));
  Digit52* const tables = memory.Get();
  Limb* const exponent = limb_memory.Get();
  if (tables == nullptr || exponent == nullptr) return false;
  Digit52* const digits = tables + table.Value();
  Digit52* const result = digits + 2 * stride;
  Limb* const quotients = exponent + longest;
  Limb* const spare = quotients + kCount * longest;

  Radix52Modulus moduli[kCount];
  SplitExponent exponents[kCount];
  const auto multiply = [&](Digit52* z, const Digit52* x, const Digit52* y) {
    product(z, x, y, moduli, count);
  };
  SecretWindow<Digit52, kCount, Radix52Select, decltype(multiply)> raising(tables, padded, window,
                                                                           multiply);
  for (size_t i = 0; i < kCount; ++i) {
    const SecretPower& power = powers[i];
    moduli[i] = ToRadix52Modulus(digits + 2 * i * padded, padded, power.m, power.n, spare);
    EnterRadix52(raising.One() + i * padded, raising.Base() + i * padded, count, padded, power,
                 spare);
    CopyLimbs(exponent, power.e, power.en);
    ZeroLimbs(exponent + power.en, longest - power.en);
    exponents[i] = Split(quotients + i * longest, exponent, longest, power.factor);
  }
  raising.Raise(result, exponents, QuotientBits(bits));
  Digit52* const unit = raising.One();
  for (size_t i = 0; i < stride; ++i) unit[i] = 0;
  for (size_t i = 0; i < kCount; ++i) unit[i * padded] = 1;
  multiply(result, result, unit);
  for (size_t i = 0; i < kCount; ++i) {
    const SecretPower& power = powers[i];
    LeaveRadix52(power.z, result + i * padded, count, power.m, power.n, spare);
  }
  WipeMemory(exponents, sizeof exponents);
  WipeMemory(moduli, sizeof moduli);
  return true;
}

size_t VectorsOf(size_t count) {
  return (count + kRadix52PerVector - 1) / kRadix52PerVector;
}

}  // namespace

bool Radix52SecretPower(const SecretPower* powers) noexcept {
  const size_t count = Radix52Count(LimbBits(powers->m, powers->n), kRadix52Spare);
  const Radix52Product product = Radix52ProductFor(VectorsOf(count));
  const auto one = [product](Digit52* z, const Digit52* x, const Digit52* y,
                             const Radix52Modulus(&moduli)[1],
                             size_t digits) { product(z, x, y, moduli[0], digits); };
  return RaiseInRadix52<1>(powers, VectorsOf(count), count, one);
}

  #if MIROLTA_KERNELS_FOR(X86_64)
bool Radix52SecretPair(const SecretPower* powers) noexcept {
  const size_t first = LimbBits(powers[0].m, powers[0].n);
  const size_t second = LimbBits(powers[1].m, powers[1].n);
  const size_t count = Radix52Count(first > second ? first : second, kRadix52Spare);
  return RaiseInRadix52<2>(powers, VectorsOf(count), count,
                           Radix52PairProductFor(VectorsOf(count)));
}
  #endif

}  // namespace mirolta

#endif
