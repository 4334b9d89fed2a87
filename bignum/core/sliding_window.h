// Sliding-window exponentiation, for any multiplication.
#pragma once

#include "limb_basics.h"

namespace mirolta {

// WindowBits returns the window width w with the fewest products: 2^(w-1) for the table, about
// bits / (w + 1) after it.
inline uint32_t WindowBits(size_t exponent_bits) {
  constexpr struct {
    size_t bits;
    uint32_t window;
  } kWidths[] = {{8, 1}, {24, 2}, {80, 3}, {240, 4}, {672, 5}, {1792, 6}};
  for (const auto& width : kWidths) {
    if (exponent_bits <= width.bits) return width.window;
  }
  return 7;
}

// SlidingWindow: z := x^e, where multiply(z, x, y) computes z := x * y.
// Shapes: table[n * 2^(window - 1)] starts with x; e[en] != 0; z[n], spare[n]. Their units are limbs or
//         digits of another radix; those of e are limbs.
// Alias:  none.
// Time:   depends on e.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 14.85.
template <typename Unit, typename Multiply>
void SlidingWindow(Unit* z, Unit* table, Unit* spare, const Limb* e, size_t en, size_t n,
                   uint32_t window, const Multiply& multiply) {
  // Odd powers x, x^3, x^5, ...
  if (window > 1) {
    multiply(spare, table, table);
    for (size_t i = 1; i < size_t{1} << (window - 1); ++i) {
      multiply(table + i * n, table + (i - 1) * n, spare);
    }
  }
  bool started = false;
  for (size_t i = LimbBits(e, en); i-- != 0;) {
    if (!TestLimbBit(e, i)) {
      multiply(z, z, z);
      continue;
    }
    // The longest run of at most window bits that ends in a one.
    size_t low = i + 1 >= window ? i + 1 - window : 0;
    while (!TestLimbBit(e, low)) ++low;
    size_t value = 0;
    for (size_t j = i + 1; j-- != low;) value = value << 1 | (TestLimbBit(e, j) ? 1 : 0);
    const Unit* const power = table + (value >> 1) * n;
    if (started) {
      for (size_t j = low; j <= i; ++j) multiply(z, z, z);
      multiply(z, z, power);
    } else {
      for (size_t j = 0; j < n; ++j) z[j] = power[j];
      started = true;
    }
    i = low;
  }
}

}  // namespace mirolta
