#include "four_limb_power.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include "four_limbs_x86_64.h"
  #include "limb_basics.h"
  #include "limb_scratch.h"
  #include "montgomery.h"
  #include "montgomery_power.h"

namespace mirolta {

namespace {

constexpr size_t kLimbs = 4;
// Fixed windows take as many products as sliding ones, without branches that are not predicted.
constexpr uint32_t kWindow = 4;
constexpr size_t kEntries = size_t{1} << kWindow;

}  // namespace

bool FourLimbPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                   size_t n) noexcept {
  if (m[kLimbs - 1] > kFourLimbsMostTop) return MontgomeryPower(z, x, e, en, m, n);
  const MontgomeryModulus limbs = PrepareMontgomery(m, n);
  const FourLimbModulus modulus = PrepareFourLimbs(m, limbs.inverse);
  LimbScratch memory{CheckedSize(SizeConstant(kEntries * kLimbs))};
  if (memory.Get() == nullptr) return false;
  Limb* const table = memory.Get();
  const auto entry = [table](size_t i) { return table + i * kLimbs; };
  if (!ToMontgomery(entry(1), x, n, limbs)) return false;
  const size_t bits = LimbBits(e, en);
  const size_t filled = bits < kWindow ? size_t{1} << bits : kEntries;
  for (size_t i = 2; i < filled; ++i) {
    const size_t half = i / 2;
    FourLimbProduct(entry(i), entry(half), i % 2 == 0 ? entry(half) : entry(half + 1), modulus, 0);
  }
  size_t at = (bits - 1) / kWindow * kWindow;
  const auto digit = [&] {
    return static_cast<size_t>(e[at / kLimbBits] >> (at % kLimbBits)) % kEntries;
  };
  CopyLimbs(z, entry(digit()), kLimbs);
  size_t squares = 0;
  while (at != 0) {
    at -= kWindow;
    squares += kWindow;
    const size_t index = digit();
    if (index == 0) continue;
    FourLimbProduct(z, z, entry(index), modulus, squares);
    squares = 0;
  }
  Limb one[kLimbs] = {1};
  FourLimbProduct(z, z, one, modulus, squares);
  return true;
}

}  // namespace mirolta

#endif
