#include "secret_power.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "radix27_power.h"
#include "radix52_power.h"
#include "secret_residues.h"
#include "secret_window.h"

namespace mirolta {

namespace {

struct LimbArithmetic {
  SecretResidues& residues;

  void Multiply(Limb* z, const Limb* x, const Limb* y) const { residues.Multiply(z, x, y); }
  void Select(Limb* z, const Limb* table, size_t entries, size_t stride, size_t n,
              Limb index) const {
    SelectEntryByMasks(z, table, entries, stride, n, index);
  }
};

bool SecretMontgomeryPower(const SecretPower* powers) {
  const SecretPower& power = *powers;
  const size_t n = power.n;
  const size_t longest = ExponentLimbs(power.en, power.exponent_bits);
  const uint32_t window = SplitWindowBits(power.exponent_bits);
  const CheckedSize residue_limbs = SecretResidues::MemoryLimbs(n);
  const CheckedSize table = WindowMemory(CheckedSize(n), window);
  LimbScratch memory(residue_limbs + table + 2 * CheckedSize(longest));
  if (memory.Get() == nullptr) return false;
  Limb* const tables = memory.Get() + residue_limbs.Value();
  Limb* const exponent = tables + table.Value();
  Limb* const quotient = exponent + longest;

  SecretResidues residues(power.m, n, memory.Get(), power.square);
  const LimbArithmetic arithmetic = {residues};
  SecretWindow<Limb, 1, LimbArithmetic> raising(tables, n, window, arithmetic);
  residues.PowerOfTwo(raising.One(), 0);
  residues.Enter(raising.Base(), power.x, power.xn);
  CopyLimbs(exponent, power.e, power.en);
  ZeroLimbs(exponent + power.en, longest - power.en);
  SplitExponent exponents[1] = {Split(quotient, exponent, longest, power.factor)};
  raising.Raise(power.z, exponents, QuotientBits(power.exponent_bits));
  residues.Leave(power.z, power.z);
  WipeMemory(exponents, sizeof exponents);
  return true;
}

constexpr SecretPowerMethod kMontgomery = {1, 0, SIZE_MAX, SecretMontgomeryPower};
#if MIROLTA_KERNELS_FOR(X86)
constexpr SecretPowerMethod kRadix52 = {1, kRadix52PowerLeastBits, kRadix52PowerMostBits,
                                        Radix52SecretPower};
#endif
#if MIROLTA_KERNELS_FOR(X86_32)
template <const Radix27Kernels& kKernels>
constexpr SecretPowerMethod kRadix27 = {
    1, kRadix27PowerLeastBits, kRadix27PowerMostBits,
    [](const SecretPower* powers) { return Radix27SecretPower(kKernels, *powers); }};
#endif
#if MIROLTA_KERNELS_FOR(X86_64)
constexpr SecretPowerMethod kRadix52Pair = {2, kRadix52PairLeastBits, kRadix52PairMostBits,
                                            Radix52SecretPair};
#endif

constexpr Kernel<const SecretPowerMethod*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86_64)
    {"ifma pair", kRadix52Features, &kRadix52Pair},
#endif
#if MIROLTA_KERNELS_FOR(X86)
    {"ifma", kRadix52Features, &kRadix52},
#endif
#if MIROLTA_KERNELS_FOR(X86_32)
    {"avx2", kFeatureAvx2, &kRadix27<kRadix27Avx2>},
    {"sse2", kFeatureSse2, &kRadix27<kRadix27Sse2>},
#endif
    {"montgomery", 0, &kMontgomery},
};

}  // namespace

constinit const KernelList<const SecretPowerMethod*> kSecretPowerKernels = kRows;

const SecretPowerMethod* ChooseSecretPower(size_t powers, size_t modulus_bits,
                                           uint32_t features) noexcept {
  for (const Kernel<const SecretPowerMethod*>& row : kSecretPowerKernels) {
    const SecretPowerMethod& method = *row.function;
    if (method.powers == powers && (row.needs & ~features) == 0 &&
        modulus_bits >= method.least_bits && modulus_bits <= method.most_bits) {
      return &method;
    }
  }
  return nullptr;
}

bool RaiseToSecrets(const SecretPower* powers, size_t count) noexcept {
  const uint32_t features = ProcessorFeatures();
  if (count == 2) {
    const size_t first = LimbBits(powers[0].m, powers[0].n);
    const size_t second = LimbBits(powers[1].m, powers[1].n);
    const size_t more = first > second ? first : second;
    const size_t less = first > second ? second : first;
    // Both have the longer one's digits.
    const SecretPowerMethod* const pair = ChooseSecretPower(2, more, features);
    if (pair != nullptr && more - less <= more / 8) return pair->raise(powers);
  }
  for (size_t i = 0; i < count; ++i) {
    const size_t bits = LimbBits(powers[i].m, powers[i].n);
    if (!ChooseSecretPower(1, bits, features)->raise(powers + i)) return false;
  }
  return true;
}

}  // namespace mirolta
