#include "power_of_two_modulus.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "montgomery.h"
#include "multiply.h"
#include "sliding_window.h"

namespace mirolta {

CheckedSize PowerOfTwoModulus::ScratchLimbs(size_t n) noexcept {
  return 2 * CheckedSize(n) + MultiplyScratch(n, n);
}

void PowerOfTwoModulus::Truncate(Limb* z) const noexcept {
  if (bits % kLimbBits != 0) z[n - 1] &= kLimbMax >> (kLimbBits - bits % kLimbBits);
}

void PowerOfTwoModulus::MultiplyLow(Limb* z, const Limb* x, const Limb* y,
                                    size_t count) const noexcept {
  MultiplyLimbs(scratch, x, count, y, count, scratch + 2 * count);
  CopyLimbs(z, scratch, count);
}

void PowerOfTwoModulus::Invert(Limb* z, const Limb* d, Limb* spare) const noexcept {
  z[0] = LimbInverse(d[0]);
  // Each step doubles the correct limbs.
  for (size_t correct = 1; correct < n;) {
    const size_t next = 2 * correct < n ? 2 * correct : n;
    ZeroLimbs(z + correct, next - correct);
    MultiplyLow(spare, d, z, next);
    // 2 - d z
    ComplementLimbs(spare, spare, next);
    AddLimb(spare, next, 3);
    MultiplyLow(z, z, spare, next);
    correct = next;
  }
  Truncate(z);
}

bool PowerOfTwoModulus::Power(Limb* z, const Limb* x, const Limb* e, size_t en) const noexcept {
  size_t exponent_bits = LimbBits(e, en);
  ZeroLimbs(z, n);
  if ((x[0] & 1) == 0) {
    // x^e is divisible by 2^e.
    uint64_t value = 0;
    for (size_t i = 0; i < exponent_bits && i < 63; ++i) {
      value |= (TestLimbBit(e, i) ? uint64_t{1} : 0) << i;
    }
    if (exponent_bits > 62 || value >= bits) return true;
  } else if (exponent_bits >= bits) {
    // The order of an odd number divides 2^(bits - 1), so that higher bits of e do not matter.
    exponent_bits = bits - 1;
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
  SlidingWindow(z, table.Get(), table.Get() + powers * n, exponent.Get(), en, n, window,
                [this](Limb* r, const Limb* a, const Limb* b) { MultiplyLow(r, a, b, n); });
  Truncate(z);
  return true;
}

}  // namespace mirolta
