// Conversion between limbs and radix-2^52 digits.
#pragma once

#include "limb_basics.h"
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

// Radix52Count returns the radix-2^52 digits that hold 2^spare times a modulus of that many bits.
inline constexpr size_t Radix52Count(size_t bits, size_t spare) {
  return (bits + spare + kRadix52Bits - 1) / kRadix52Bits;
}

// Radix52Digit returns radix-2^52 digit i of x[n], 0 above its limbs.
inline Limb Radix52Digit(const Limb* x, size_t n, size_t i) {
  const size_t bit = i * kRadix52Bits;
  const size_t at = bit / kLimbBits;
  const uint32_t shift = bit % kLimbBits;
  if (at >= n) return 0;
  Limb digit = x[at] >> shift;
  if (shift > kLimbBits - kRadix52Bits && at + 1 < n) digit |= x[at + 1] << (kLimbBits - shift);
  return digit & kRadix52Mask;
}

// ToRadix52: z := the lowest count radix-2^52 digits of x.
// Shapes: x[n], z[count].
// Alias:  none.
inline void ToRadix52(Limb* z, size_t count, const Limb* x, size_t n) {
  for (size_t i = 0; i < count; ++i) z[i] = Radix52Digit(x, n, i);
}

// FromRadix52: z := the value of the radix-2^52 digits x, modulo B^n.
// Shapes: x[count], z[n].
// Alias:  none.
inline void FromRadix52(Limb* z, size_t n, const Limb* x, size_t count) {
  ZeroLimbs(z, n);
  for (size_t i = 0; i < count; ++i) {
    const size_t bit = i * kRadix52Bits;
    const size_t at = bit / kLimbBits;
    const uint32_t shift = bit % kLimbBits;
    if (at < n) z[at] |= x[i] << shift;
    if (shift > kLimbBits - kRadix52Bits && at + 1 < n) z[at + 1] |= x[i] >> (kLimbBits - shift);
  }
}

}  // namespace mirolta

#endif
