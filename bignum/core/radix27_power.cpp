#include "radix27_power.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include "divide.h"
  #include "limb_scratch.h"
  #include "montgomery.h"
  #include "radix52_scratch.h"
  #include "secret_residues.h"
  #include "secret_window.h"
  #include "shifted_residue.h"
  #include "sliding_window.h"

namespace mirolta {

namespace {

// z := the lowest count radix-2^27 digits of x.
// Shapes: x[n], z[count].
void ToRadix27(Digit27* z, size_t count, const Limb* x, size_t n) {
  uint64_t held = 0;
  uint32_t bits = 0;  // that are held
  size_t at = 0;
  for (size_t i = 0; i < count; ++i) {
    if (bits < kRadix27Bits) {
      if (at < n) held |= uint64_t{x[at++]} << bits;
      bits += kLimbBits;
    }
    z[i] = held & kRadix27Mask;
    held >>= kRadix27Bits;
    bits -= kRadix27Bits;
  }
}

// z := the value of the radix-2^27 digits x, which may be longer than that, modulo B^n.
// Shapes: x[count], z[n].
void FromRadix27(Limb* z, size_t n, const Digit27* x, size_t count) {
  uint64_t held = 0;
  uint32_t bits = 0;
  size_t at = 0;
  for (size_t i = 0; i < count && at < n; ++i) {
    held += x[i] << bits;
    bits += kRadix27Bits;
    if (bits >= kLimbBits) {
      z[at++] = static_cast<Limb>(held);
      held >>= kLimbBits;
      bits -= kLimbBits;
    }
  }
  for (; at < n; held >>= kLimbBits) z[at++] = static_cast<Limb>(held);
}

constexpr size_t kBlockLimbs = (kRadix27BlockBits + kLimbBits - 1) / kLimbBits;

// The memory of products modulo m.
// Shapes: work[Radix27WorkDigits(count)], m[n], n >= kBlockLimbs, spare[n + kBlockLimbs].
// Time:   depends on the lengths only.
void PrepareWork(Digit27* work, size_t count, const Limb* m, size_t n, Limb* spare) {
  const LimbKernels& k = CurrentLimbKernels();
  constexpr Limb kThree[kBlockLimbs] = {3};
  Limb inverse[kBlockLimbs] = {LimbInverse(m[0])};
  Limb rest[kBlockLimbs];
  Limb product[2 * kBlockLimbs];
  for (uint32_t bits = kLimbBits; bits < kRadix27BlockBits; bits *= 2) {
    // Newton's step: 2 - m * inverse = ~(m * inverse) + 3.
    k.multiply(product, m, kBlockLimbs, inverse, kBlockLimbs);
    for (size_t i = 0; i < kBlockLimbs; ++i) rest[i] = ~product[i];
    k.add(rest, rest, kThree, kBlockLimbs);
    k.multiply(product, rest, kBlockLimbs, inverse, kBlockLimbs);
    CopyLimbs(inverse, product, kBlockLimbs);
  }
  // With the inverse of m modulo 2^108 the multiple is m - (m * inverse - 1) / 2^108.
  constexpr uint32_t kTopBits = kRadix27BlockBits % kLimbBits;
  inverse[kBlockLimbs - 1] &= (Limb{1} << kTopBits) - 1;
  k.multiply(spare, m, n, inverse, kBlockLimbs);
  Limb* const above = spare + kBlockLimbs - 1;
  ShiftRightLimbs(above, above, n + 1, kTopBits);
  k.subtract(above, m, above, n);
  for (size_t i = 0; i < Radix27WorkDigits(CheckedSize(count)).Value(); ++i) work[i] = 0;
  ToRadix27(work + kRadix27Block, count, above, n);
  WipeMemory(inverse, sizeof inverse);
  WipeMemory(rest, sizeof rest);
  WipeMemory(product, sizeof product);
}

struct Arithmetic27 {
  const Radix27Kernels& kernels;
  Digit27* work;
  size_t count;

  void Multiply(Digit27* z, const Digit27* x, const Digit27* y) const {
    kernels.product(z, x, y, work, count);
  }
  void Select(Digit27* z, const Digit27* table, size_t entries, size_t stride, size_t n,
              Digit27 index) const {
    kernels.select(z, table, entries, stride, n, index);
  }
};

}  // namespace

bool Radix27Power(const Radix27Kernels& kernels, Limb* z, const Limb* x, const Limb* e, size_t en,
                  const Limb* m, size_t n) noexcept {
  n = SignificantLimbs(m, n);
  const size_t count = Radix27Count(LimbBits(m, n));
  const size_t limb_count = count * kRadix27Bits / kLimbBits + 1;
  const uint32_t window = WindowBits(LimbBits(e, en));
  const size_t powers = size_t{1} << (window - 1);
  const CheckedSize table_digits = CheckedSize(powers) * CheckedSize(count);
  Radix52Scratch memory(table_digits + 2 * CheckedSize(count) +
                        Radix27WorkDigits(CheckedSize(count)));
  LimbScratch limb_memory(CheckedSize(limb_count) + kBlockLimbs);
  Digit27* const table = memory.Get();
  Limb* const limbs = limb_memory.Get();
  if (table == nullptr || limbs == nullptr) return false;
  Digit27* const spare = table + table_digits.Value();
  Digit27* const power = spare + count;
  Digit27* const work = power + count;

  PrepareWork(work, count, m, n, limbs);
  if (!ShiftedResidue(limbs, x, count * kRadix27Bits, m, n)) return false;
  ToRadix27(table, count, limbs, n);
  SlidingWindow(power, table, spare, e, en, count, window,
                [&](Digit27* r, const Digit27* a, const Digit27* b) {
                  kernels.product(r, a, b, work, count);
                });
  for (size_t i = 0; i < count; ++i) spare[i] = 0;
  spare[0] = 1;
  kernels.product(power, power, spare, work, count);
  FromRadix27(limbs, limb_count, power, count);
  return DivideLimbs(nullptr, z, limbs, limb_count, m, n);
}

bool Radix27SecretPower(const Radix27Kernels& kernels, const SecretPower& power) noexcept {
  const size_t n = power.n;
  const size_t count = Radix27Count(LimbBits(power.m, n));
  const size_t longest = ExponentLimbs(power.en, power.exponent_bits);
  const uint32_t window = SplitWindowBits(power.exponent_bits);
  const CheckedSize table = WindowMemory(CheckedSize(count), window);
  const CheckedSize residue_limbs = SecretResidues::MemoryLimbs(n);
  Radix52Scratch memory(table + 2 * CheckedSize(count) + Radix27WorkDigits(CheckedSize(count)));
  LimbScratch limb_memory(residue_limbs + 2 * CheckedSize(n) + kBlockLimbs +
                          2 * CheckedSize(longest));
  Digit27* const tables = memory.Get();
  if (tables == nullptr || limb_memory.Get() == nullptr) return false;
  Digit27* const result = tables + table.Value();
  Digit27* const leaving = result + count;
  Digit27* const work = leaving + count;
  Limb* const one = limb_memory.Get() + residue_limbs.Value();
  Limb* const base = one + n;
  Limb* const exponent = base + n + kBlockLimbs;
  Limb* const quotient = exponent + longest;

  PrepareWork(work, count, power.m, n, one);
  const Arithmetic27 arithmetic = {kernels, work, count};
  SecretWindow<Digit27, 1, Arithmetic27> raising(tables, count, window, arithmetic);
  SecretResidues residues(power.m, n, limb_memory.Get(), power.square);
  residues.EnterShifted(one, base, power.x, power.xn, count * kRadix27Bits);
  ToRadix27(raising.One(), count, one, n);
  ToRadix27(raising.Base(), count, base, n);
  residues.PowerOfTwo(one, 0);
  ToRadix27(leaving, count, one, n);
  CopyLimbs(exponent, power.e, power.en);
  ZeroLimbs(exponent + power.en, longest - power.en);
  SplitExponent exponents[1] = {Split(quotient, exponent, longest, power.factor)};
  raising.Raise(result, exponents, QuotientBits(power.exponent_bits));
  // The product with B^n is below m * B^n, which a reduction of limbs takes.
  arithmetic.Multiply(result, result, leaving);
  FromRadix27(one, 2 * n, result, count);
  const LimbKernels& k = CurrentLimbKernels();
  k.reduce(power.z, one, power.m, n, PrepareMontgomery(power.m, n).inverse);
  WipeMemory(exponents, sizeof exponents);
  return true;
}

}  // namespace mirolta

#endif
