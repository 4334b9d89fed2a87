// Powers with secret exponents in radix 2^52.
#include "radix52_power.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include "radix52.h"
  #include "radix52_scratch.h"
  #include "secret_residues.h"
  #include "secret_window.h"

namespace mirolta {

namespace {

// One and base of one power as radix-2^52 digits, times 2^(52 count) modulo m.
// Shapes: one[padded], base[padded], memory[MemoryLimbs(n) + 2n].
void EnterRadix52(Limb* one, Limb* base, size_t count, size_t padded, const SecretPower& power,
                  Limb* memory) {
  const size_t n = power.n;
  Limb* const shift = memory;
  Limb* const residue = shift + n;
  SecretResidues residues(power.m, n, residue + n);
  residues.PowerOfTwo(shift, count * kRadix52Bits);
  residues.Enter(residue, power.x, power.xn);
  residues.Multiply(residue, residue, shift);
  residues.Leave(residue, residue);
  residues.Leave(shift, shift);
  ToRadix52(one, padded, shift, n);
  ToRadix52(base, padded, residue, n);
}

// z := the value of the digits, below 2 m, modulo m.
// Shapes: digits[count], spare[n].
void LeaveRadix52(const SecretPower& power, const Limb* digits, size_t count, Limb* spare) {
  const size_t n = power.n;
  FromRadix52(power.z, n, digits, count);
  const Limb borrow = CurrentLimbKernels().subtract(spare, power.z, power.m, n);
  SelectLimbs(power.z, power.z, spare, static_cast<Limb>(0 - borrow), n);
}

template <size_t kCount, typename Product>
bool RaiseInRadix52(const SecretPower* powers, size_t vectors, size_t count,
                    const Product& product) {
  const size_t padded = vectors * kRadix52PerVector;
  const size_t stride = kCount * padded;
  size_t limbs = 0, longest = 0;
  for (size_t i = 0; i < kCount; ++i) {
    limbs = powers[i].n > limbs ? powers[i].n : limbs;
    longest = powers[i].en > longest ? powers[i].en : longest;
  }
  if (longest < limbs) longest = limbs;
  const CheckedSize bits = CheckedSize(longest) * SizeConstant(kLimbBits);
  const uint32_t window = SplitWindowBits(bits.Value());
  const CheckedSize table = WindowMemoryLimbs(CheckedSize(stride), window);
  const size_t numbers = kCount + 1;  // of exponents
  Radix52Scratch memory(table + (2 + kRadix52PairTerms / 2) * CheckedSize(stride) +
                        SecretResidues::MemoryLimbs(limbs) + 2 * CheckedSize(limbs) +
                        CheckedSize(numbers) * CheckedSize(longest));
  Limb* const tables = memory.Get();
  if (tables == nullptr) return false;
  Limb* const moduli = tables + table.Value();
  Limb* const result = moduli + stride;
  Limb* const terms = result + stride;
  Limb* const exponent = terms + kRadix52PairTerms / 2 * stride;
  Limb* const quotients = exponent + longest;
  Limb* const spare = quotients + kCount * longest;

  Limb inverses[kCount];
  SplitExponent exponents[kCount];
  const auto multiply = [&](Limb* z, const Limb* x, const Limb* y) {
    product(z, x, y, moduli, count, inverses, terms);
  };
  SecretWindow<kCount, Radix52Select, decltype(multiply)> raising(tables, padded, window, multiply);
  for (size_t i = 0; i < kCount; ++i) {
    const SecretPower& power = powers[i];
    ToRadix52(moduli + i * padded, padded, power.m, power.n);
    inverses[i] = Radix52Inverse(power.m, power.n) << (kLimbBits - kRadix52Bits);
    EnterRadix52(raising.One() + i * padded, raising.Base() + i * padded, count, padded, power,
                 spare);
    CopyLimbs(exponent, power.e, power.en);
    ZeroLimbs(exponent + power.en, longest - power.en);
    exponents[i] = Split(quotients + i * longest, exponent, longest, power.factor);
  }
  raising.Raise(result, exponents, bits.Value() - (kLimbBits - 1));
  // The product with 1 is at most m.
  Limb* const unit = raising.One();
  ZeroLimbs(unit, stride);
  for (size_t i = 0; i < kCount; ++i) unit[i * padded] = 1;
  multiply(result, result, unit);
  for (size_t i = 0; i < kCount; ++i) LeaveRadix52(powers[i], result + i * padded, count, spare);
  WipeMemory(exponents, sizeof exponents);
  WipeMemory(inverses, sizeof inverses);
  return true;
}

size_t VectorsOf(size_t count) {
  return (count + kRadix52PerVector - 1) / kRadix52PerVector;
}

}  // namespace

bool Radix52SecretPower(const SecretPower* powers) noexcept {
  const size_t count = Radix52Count(LimbBits(powers->m, powers->n), 2);
  const Radix52Product product = Radix52ProductFor(VectorsOf(count));
  const auto one = [product](Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t digits,
                             const Limb(&inverses)[1],
                             Limb*) { product(z, x, y, m, digits, inverses[0]); };
  return RaiseInRadix52<1>(powers, VectorsOf(count), count, one);
}

bool Radix52SecretPair(const SecretPower* powers) noexcept {
  const size_t first = LimbBits(powers[0].m, powers[0].n);
  const size_t second = LimbBits(powers[1].m, powers[1].n);
  const size_t count = Radix52Count(first > second ? first : second, 2);
  return RaiseInRadix52<2>(powers, VectorsOf(count), count,
                           Radix52PairProductFor(VectorsOf(count)));
}

}  // namespace mirolta

#endif
