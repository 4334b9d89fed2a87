// Conversion between limbs and radix-2^52 digits.
#pragma once

#include "limb_basics.h"
#include "limb_kernels.h"
#include "montgomery.h"
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

// Radix52Count returns the radix-2^52 digits that hold 2^spare times a modulus of that many bits.
inline constexpr size_t Radix52Count(size_t bits, size_t spare) {
  return (bits + spare + kRadix52Bits - 1) / kRadix52Bits;
}

// Radix52Digit returns radix-2^52 digit i of x[n], 0 above its limbs.
inline Digit52 Radix52Digit(const Limb* x, size_t n, size_t i) {
  const size_t bit = i * kRadix52Bits;
  size_t at = bit / kLimbBits;
  const uint32_t shift = bit % kLimbBits;
  if (at >= n) return 0;
  Digit52 digit = x[at] >> shift;
  for (uint32_t got = kLimbBits - shift; got < kRadix52Bits && ++at < n; got += kLimbBits) {
    digit |= Digit52{x[at]} << got;
  }
  return digit & kRadix52Mask;
}

// OrRadix52Digit: z := z | digit * 2^bit, modulo B^n.
// Shapes: z[n], digit below 2^52.
inline void OrRadix52Digit(Limb* z, size_t n, size_t bit, Digit52 digit) {
  size_t at = bit / kLimbBits;
  const uint32_t shift = bit % kLimbBits;
  if (at >= n) return;
  z[at] |= static_cast<Limb>(digit << shift);
  for (uint32_t put = kLimbBits - shift; put < kRadix52Bits && ++at < n; put += kLimbBits) {
    z[at] |= static_cast<Limb>(digit >> put);
  }
}

// ToRadix52: z := the lowest count radix-2^52 digits of x.
// Shapes: x[n], z[count].
// Alias:  none.
inline void ToRadix52(Digit52* z, size_t count, const Limb* x, size_t n) {
  for (size_t i = 0; i < count; ++i) z[i] = Radix52Digit(x, n, i);
}

// FromRadix52: z := the value of the radix-2^52 digits x, modulo B^n.
// Shapes: x[count], z[n].
// Alias:  none.
inline void FromRadix52(Limb* z, size_t n, const Digit52* x, size_t count) {
  ZeroLimbs(z, n);
  for (size_t i = 0; i < count; ++i) OrRadix52Digit(z, n, i * kRadix52Bits, x[i]);
}

// Radix52Inverse returns -1 / m mod 2^52.
// Shapes: m[n] odd.
inline Digit52 Radix52Inverse(const Limb* m, size_t n) {
  Digit52 inverse = static_cast<Limb>(0 - LimbInverse(m[0]));
  if constexpr (kLimbBits < kRadix52Bits) {
    // Newton's step doubles the bits: m * inverse = e - 1 becomes (e - 1) (e + 1) = e^2 - 1.
    inverse *= Radix52Digit(m, n, 0) * inverse + 2;
  }
  return inverse & kRadix52Mask;
}

// The limbs that hold a radix-2^52 digit.
inline constexpr size_t kRadix52DigitLimbs = (kRadix52Bits + kLimbBits - 1) / kLimbBits;

// NextMultiple: z := (x + m * i) / 2^52 for the i < 2^52 that makes the sum divisible.
// Shapes: z[padded], x[padded] <= m, m[n], inverse = -1 / m mod 2^52, n >= kRadix52DigitLimbs,
//         spare[n + kRadix52DigitLimbs].
// Alias:  z may be x.
// Time:   depends on the lengths only.
inline void NextMultiple(Digit52* z, const Digit52* x, size_t padded, const Limb* m, size_t n,
                         Digit52 inverse, Limb* spare) {
  Limb factor[kRadix52DigitLimbs] = {};
  OrRadix52Digit(factor, kRadix52DigitLimbs, 0, x[0] * inverse & kRadix52Mask);
  CurrentLimbKernels().multiply(spare, m, n, factor, kRadix52DigitLimbs);
  Digit52 sum = x[0] + Radix52Digit(spare, n + kRadix52DigitLimbs, 0);
  for (size_t i = 0; i < padded; ++i) {
    sum >>= kRadix52Bits;
    sum += Radix52Digit(spare, n + kRadix52DigitLimbs, i + 1);
    if (i + 1 < padded) sum += x[i + 1];
    z[i] = sum & kRadix52Mask;
  }
  WipeMemory(factor, sizeof factor);
}

// The numbers of padded digits that a Radix52Modulus refers to.
inline constexpr size_t kRadix52ModulusNumbers = 1 + kRadix52Multiples;

// ToRadix52Modulus returns m as the products take it.
// Shapes: digits[kRadix52ModulusNumbers * padded], which the result refers to, m[n] odd,
//         n >= kRadix52DigitLimbs, spare[n + kRadix52DigitLimbs].
// Alias:  none.
// Time:   depends on the lengths only.
inline Radix52Modulus ToRadix52Modulus(Digit52* digits, size_t padded, const Limb* m, size_t n,
                                       Limb* spare) {
  Radix52Modulus modulus = {digits, {}, Radix52Inverse(m, n)};
  ToRadix52(digits, padded, m, n);
  Digit52* number = digits + padded;
  for (size_t i = 0; i < padded; ++i) number[i] = i == 0 ? 1 : 0;
  const Digit52* before = number;
  for (const Digit52*& multiple : modulus.multiple) {
    NextMultiple(number, before, padded, m, n, modulus.inverse, spare);
    multiple = before = number;
    number += padded;
  }
  return modulus;
}

// LeaveRadix52: z := the value of x modulo m.
// Shapes: x[count] < 2 m, m[n], z[n], spare[n + 1].
// Alias:  none.
// Time:   depends on the lengths only.
inline void LeaveRadix52(Limb* z, const Digit52* x, size_t count, const Limb* m, size_t n,
                         Limb* spare) {
  FromRadix52(spare, n + 1, x, count);
  const Limb borrow = CurrentLimbKernels().subtract(z, spare, m, n);
  const Limb keep = static_cast<Limb>(0 - static_cast<Limb>(borrow & (spare[n] ^ 1)));
  SelectLimbs(z, spare, z, keep, n);
}

}  // namespace mirolta

#endif
