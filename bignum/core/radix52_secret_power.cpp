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
  residues.EnterShifted(shift, residue, power.x, power.xn, count * kRadix52Bits);
  ToRadix52(one, padded, shift, n);
  ToRadix52(base, padded, residue, n);
}

// The same by products of radix-2^52 digits, for a base of no more limbs than m, whose top bit is set: so
// it is below 2 m.
// Shapes: spare[padded], memory[2n].
template <typename Arithmetic>
void EnterByProducts(Digit52* one, Digit52* base, Digit52* spare, size_t count, size_t padded,
                     const SecretPower& power, Limb* memory, const Arithmetic& arithmetic) {
  const size_t n = power.n;
  const size_t bits = count * kRadix52Bits;
  Limb* const residue = memory;
  DoubleToPower(residue, bits, power.m, n, residue + n);
  ToRadix52(one, padded, residue, n);
  DoubleModulo(residue, power.m, n, residue + n);
  ToRadix52(spare, padded, residue, n);
  // 2 to the power of bits, from its top bit down.
  ToRadix52(base, padded, residue, n);
  uint32_t shift = 0;
  while (bits >> shift > 1) ++shift;
  while (shift-- != 0) {
    arithmetic.Multiply(base, base, base);
    if ((bits >> shift & 1) != 0) arithmetic.Multiply(base, base, spare);
  }
  ToRadix52(spare, padded, power.x, power.xn);
  arithmetic.Multiply(base, spare, base);
}

template <size_t kCount, typename Product>
struct Arithmetic52 {
  const Product& product;
  const Radix52Modulus (&moduli)[kCount];
  size_t count;

  void Multiply(Digit52* z, const Digit52* x, const Digit52* y) const {
    product(z, x, y, moduli, count);
  }
  void Select(Digit52* z, const Digit52* table, size_t entries, size_t stride, size_t n,
              Digit52 index) const {
    Radix52Select(z, table, entries, stride, n, index);
  }
};

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
  Radix52Scratch memory(table + (kRadix52ModulusNumbers + 1) * CheckedSize(stride));
  LimbScratch limb_memory(SecretResidues::MemoryLimbs(limbs) + 2 * CheckedSize(limbs) +
                          CheckedSize(kExponents) * CheckedSize(longest));
  Digit52* const tables = memory.Get();
  Limb* const exponent = limb_memory.Get();
  if (tables == nullptr || exponent == nullptr) return false;
  Digit52* const digits = tables + table.Value();
  Digit52* const result = digits + kRadix52ModulusNumbers * stride;
  Limb* const quotients = exponent + longest;
  Limb* const spare = quotients + kCount * longest;

  Radix52Modulus moduli[kCount];
  SplitExponent exponents[kCount];
  const Arithmetic52<kCount, Product> arithmetic = {product, moduli, count};
  SecretWindow<Digit52, kCount, Arithmetic52<kCount, Product>> raising(tables, padded, window,
                                                                       arithmetic);
  for (size_t i = 0; i < kCount; ++i) {
    const SecretPower& power = powers[i];
    moduli[i] = ToRadix52Modulus(digits + kRadix52ModulusNumbers * i * padded, padded, power.m,
                                 power.n, spare);
    Digit52* const one = raising.One() + i * padded;
    Digit52* const base = raising.Base() + i * padded;
    if (kCount == 1 && power.xn <= power.n && LimbBits(power.m, power.n) == power.n * kLimbBits) {
      EnterByProducts(one, base, result, count, padded, power, spare, arithmetic);
    } else {
      EnterRadix52(one, base, count, padded, power, spare);
    }
    CopyLimbs(exponent, power.e, power.en);
    ZeroLimbs(exponent + power.en, longest - power.en);
    exponents[i] = Split(quotients + i * longest, exponent, longest, power.factor);
  }
  raising.Raise(result, exponents, QuotientBits(bits));
  Digit52* const unit = raising.One();
  for (size_t i = 0; i < stride; ++i) unit[i] = 0;
  for (size_t i = 0; i < kCount; ++i) unit[i * padded] = 1;
  arithmetic.Multiply(result, result, unit);
  for (size_t i = 0; i < kCount; ++i) {
    const SecretPower& power = powers[i];
    LeaveRadix52(power.z, result + i * padded, count, power.m, power.n, spare);
  }
  WipeMemory(exponents, sizeof exponents);
  WipeMemory(moduli, sizeof moduli);
  return true;
}

}  // namespace

bool Radix52SecretPower(const SecretPower* powers) noexcept {
  const size_t count = Radix52Count(LimbBits(powers->m, powers->n), kRadix52Spare);
  const Radix52Product product = Radix52ProductFor(Radix52Vectors(count));
  const auto one = [product](Digit52* z, const Digit52* x, const Digit52* y,
                             const Radix52Modulus(&moduli)[1],
                             size_t digits) { product(z, x, y, moduli[0], digits); };
  return RaiseInRadix52<1>(powers, Radix52Vectors(count), count, one);
}

  #if MIROLTA_KERNELS_FOR(X86_64)
bool Radix52SecretPair(const SecretPower* powers) noexcept {
  const size_t first = LimbBits(powers[0].m, powers[0].n);
  const size_t second = LimbBits(powers[1].m, powers[1].n);
  const size_t count = Radix52Count(first > second ? first : second, kRadix52Spare);
  return RaiseInRadix52<2>(powers, Radix52Vectors(count), count,
                           Radix52PairProductFor(Radix52Vectors(count)));
}
  #endif

}  // namespace mirolta

#endif
