// Montgomery multiplication in radix 2^27, by vectors of 64-bit sums of products, for 32-bit x86. Digits are
// radix-2^27 digits here.
#pragma once

#include "limb.h"

#if MIROLTA_KERNELS_FOR(X86)

namespace mirolta {

// A radix-2^27 digit as it is stored, in a lane of a vector.
using Digit27 = uint64_t;

inline constexpr uint32_t kRadix27Bits = 27;
inline constexpr Digit27 kRadix27Mask = (Digit27{1} << kRadix27Bits) - 1;
// Numbers are whole blocks of digits: a step multiplies by one, and removes one from the sum.
inline constexpr size_t kRadix27Block = 4;
inline constexpr uint32_t kRadix27BlockBits = kRadix27Block * kRadix27Bits;
// What a stored digit may have more than its bits hold: carries are passed on twice only.
inline constexpr Digit27 kRadix27More = Digit27{1} << 11;
// The sums of twice as many products stay below 2^64.
inline constexpr size_t kRadix27MostDigits = 508;
// Numbers are below 2^(kRadix27BlockBits + 1) m, which is at most half of 2^(27 count).
inline constexpr size_t kRadix27Spare = kRadix27BlockBits + 2;
// Selection takes so many digits at once.
inline constexpr size_t kRadix27LeastDigits = 16;

// Radix27Count returns the digits of numbers modulo one of that many bits.
inline constexpr size_t Radix27Count(size_t bits) {
  const size_t blocks = (bits + kRadix27Spare + kRadix27BlockBits - 1) / kRadix27BlockBits;
  return blocks * kRadix27Block;
}

// Radix27WorkDigits returns the digits of memory of products: a block of zeros, (m * inverse + 1) / 2^108 with
// inverse = -1 / m mod 2^108, and the products' own digits, which are zero before the first product.
inline constexpr CheckedSize Radix27WorkDigits(CheckedSize count) {
  return 3 * count + 4 * kRadix27Block;
}

// Radix27Kernels: the loops by one instruction set.
struct Radix27Kernels {
  // z := x * y / 2^(27 count) mod m, below 2^(kRadix27BlockBits + 1) m; for y = 1 not above 2^kRadix27BlockBits m.
  // Shapes: x[count], y[count], z[count], digits up to kRadix27Mask + kRadix27More, of values as z has;
  //         work[Radix27WorkDigits(count)]; count is Radix27Count of m's length, from kRadix27LeastDigits to
  //         kRadix27MostDigits.
  // Alias:  z, x and y may be the same.
  // Time:   depends on count only.
  // Source: Orup, Simplifying quotient determination in high-radix modular multiplication, 1995; Gueron and
  //         Krasnov, Software implementation of modular exponentiation, using advanced vector instructions
  //         architectures, 2012.
  void (*product)(Digit27* z, const Digit27* x, const Digit27* y, Digit27* work, size_t count);
  // z := entry `index` of a table of `entries`, each n digits, `stride` digits apart.
  // Shapes: n >= kRadix27LeastDigits, a multiple of kRadix27Block.
  // Time:   depends on the counts only: every entry is read.
  void (*select)(Digit27* z, const Digit27* table, size_t entries, size_t stride, size_t n,
                 Digit27 index);
};

  #if MIROLTA_KERNELS_FOR(X86_32)
extern const Radix27Kernels kRadix27Avx2;  // needs kFeatureAvx2
extern const Radix27Kernels kRadix27Sse2;  // needs kFeatureSse2
  #endif

}  // namespace mirolta

#endif
