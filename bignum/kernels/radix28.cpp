#include "radix28.h"

#if MIROLTA_KERNELS_FOR(X86_32)

namespace mirolta {

namespace {

// Digit k of a group.
template <size_t kDigit>
inline __attribute__((always_inline)) Digit28 DigitOf(const Limb* x) {
  if constexpr (kDigit == 0) {
    return x[0] & kRadix28Mask;
  } else if constexpr (kDigit == kGroupDigits - 1) {
    return x[kDigit - 1] >> (kLimbBits - kRadix28Bits);
  } else {
    return (x[kDigit - 1] >> (kLimbBits - 4 * kDigit) | x[kDigit] << (4 * kDigit)) & kRadix28Mask;
  }
}

template <typename Digit, size_t... kDigit>
inline __attribute__((always_inline)) void ToGroup(Digit* z, const Limb* x,
                                                   std::index_sequence<kDigit...>) {
  ((z[kDigit] = DigitOf<kDigit>(x)), ...);
}

template <typename Digit>
size_t ToGroups(Digit* z, const Limb* x, size_t n) {
  constexpr auto kAll = std::make_index_sequence<kGroupDigits>();
  size_t left = n;
  for (; left >= kGroupLimbs; left -= kGroupLimbs, x += kGroupLimbs, z += kGroupDigits)
    ToGroup(z, x, kAll);
  if (left != 0) {
    Limb rest[kGroupLimbs] = {};
    for (size_t i = 0; i < left; ++i) rest[i] = x[i];
    ToGroup(z, rest, kAll);
  }
  return (n * kLimbBits + kRadix28Bits - 1) / kRadix28Bits;
}

}  // namespace

size_t ToRadix28(Digit28* z, const Limb* x, size_t n) {
  return ToGroups(z, x, n);
}

size_t ToRadix28(DigitLane28* z, const Limb* x, size_t n) {
  return ToGroups(z, x, n);
}

}  // namespace mirolta

#endif
