// Arithmetic modulo a power of two.
#pragma once

#include "limb.h"

namespace mirolta {

// PowerOfTwoModulus: arithmetic modulo 2^bits on values of n limbs, n = ceil(bits / kLimbBits).
struct PowerOfTwoModulus {
  size_t bits;
  size_t n;
  Limb* scratch;  // ScratchLimbs(n)

  static CheckedSize ScratchLimbs(size_t n) noexcept;

  // Truncate: z := z mod 2^bits.
  // Shapes: z[n].
  void Truncate(Limb* z) const noexcept;
  // MultiplyLow: z := x * y mod B^count.
  // Shapes: x[count], y[count], z[count], count <= n.
  void MultiplyLow(Limb* z, const Limb* x, const Limb* y, size_t count) const noexcept;
  // Invert: z := 1 / d mod 2^bits, by Newton's iteration.
  // Shapes: d[n] odd, z[n], spare[n].
  void Invert(Limb* z, const Limb* d, Limb* spare) const noexcept;
  // Power: z := x^e mod 2^bits.
  // Shapes: x[n], z[n], e[en] != 0.
  // Errors: false if memory runs out.
  [[nodiscard]] bool Power(Limb* z, const Limb* x, const Limb* e, size_t en) const noexcept;
};

}  // namespace mirolta
