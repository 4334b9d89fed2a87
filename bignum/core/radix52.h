// Limbs to digits of 52 bits and back.
#pragma once

#include "radix52_ifma.h"
#include "limb_basics.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)

namespace mirolta {

// DigitsFor returns the digits in Montgomery's form for moduli of that many bits: enough for
// 2^spare times the modulus.
inline constexpr size_t DigitsFor(size_t bits, size_t spare) {
  return (bits + spare + kDigitBits - 1) / kDigitBits;
}

// SplitDigit returns digit i of x[n], 0 above its limbs.
inline Limb SplitDigit(const Limb* x, size_t n, size_t i) {
  const size_t bit = i * kDigitBits;
  const size_t at = bit / kLimbBits;
  const uint32_t shift = bit % kLimbBits;
  if (at >= n) return 0;
  Limb digit = x[at] >> shift;
  if (shift > kLimbBits - kDigitBits && at + 1 < n) digit |= x[at + 1] << (kLimbBits - shift);
  return digit & kDigitMask;
}

// SplitDigits: z := x in count digits. Shapes: x[n], z[count]; z overlaps nothing.
inline void SplitDigits(Limb* z, size_t count, const Limb* x, size_t n) {
  for (size_t i = 0; i < count; ++i) z[i] = SplitDigit(x, n, i);
}

// JoinDigits: z := the value of x modulo B^n. Shapes: x[count], z[n]; z overlaps nothing.
inline void JoinDigits(Limb* z, size_t n, const Limb* x, size_t count) {
  ZeroLimbs(z, n);
  for (size_t i = 0; i < count; ++i) {
    const size_t bit = i * kDigitBits;
    const size_t at = bit / kLimbBits;
    const uint32_t shift = bit % kLimbBits;
    if (at < n) z[at] |= x[i] << shift;
    if (shift > kLimbBits - kDigitBits && at + 1 < n) z[at + 1] |= x[i] >> (kLimbBits - shift);
  }
}

}  // namespace mirolta

#endif
