// Montgomery arithmetic on secret values modulo an odd number.
#pragma once

#include "montgomery.h"

namespace mirolta {

// DoubleModulo: z := 2 z mod m.
// Shapes: m[n], z[n] < m, spare[n].
// Time:   depends on n only.
void DoubleModulo(Limb* z, const Limb* m, size_t n, Limb* spare) noexcept;

// DoubleToPower: z := 2^e mod m, by doubling the top bit of m.
// Shapes: m[n] odd and above 1, m[n - 1] != 0, e at least LimbBits(m, n) - 1; z[n] < m, spare[n].
// Time:   depends on n, e and the bit length of m only.
void DoubleToPower(Limb* z, size_t e, const Limb* m, size_t n, Limb* spare) noexcept;

// SecretResidues computes modulo m, with products by the schoolbook method: the faster methods branch
// on the sign of differences. x is represented by x * B^n mod m.
// Time:   of all operations, depends on lengths only, the bit length of m among them.
class SecretResidues {
 public:
  // It owns neither m nor memory, which the caller wipes.
  // Shapes: m[n] odd and above 1, m[n - 1] != 0, memory[MemoryLimbs(n)]; square[n] is B^2n mod m, or null
  //         to compute it.
  SecretResidues(const Limb* m, size_t n, Limb* memory, const Limb* square = nullptr) noexcept;
  static CheckedSize MemoryLimbs(size_t n) noexcept { return 5 * CheckedSize(n); }

  // Enter: z := x * B^n mod m. Leave: z := x / B^n mod m.
  // Shapes: Enter: x[count]; Leave: x[n], any limbs; z[n] < m.
  // Alias:  Leave: z may be x.
  void Enter(Limb* z, const Limb* x, size_t count) noexcept;
  void Leave(Limb* z, const Limb* x) noexcept;
  // EnterShifted: one := 2^e mod m, z := x * 2^e mod m.
  // Shapes: one[n], x[count], z[n] < m.
  // Time:   depends on e too.
  void EnterShifted(Limb* one, Limb* z, const Limb* x, size_t count, size_t e) noexcept;
  // Multiply: z := x * y / B^n mod m.
  // Shapes: x[n], y[n], z[n] < m.
  // Alias:  z may be x or y; x may be y.
  void Multiply(Limb* z, const Limb* x, const Limb* y) noexcept;
  // PowerOfTwo: z := 2^e * B^n mod m.
  // Shapes: z[n].
  // Time:   depends on e too.
  void PowerOfTwo(Limb* z, size_t e) noexcept;
  // Subtract: z := x - y mod m.
  // Shapes: x[n] < m, y[n] <= m, z[n] < m.
  // Alias:  z may be x.
  void Subtract(Limb* z, const Limb* x, const Limb* y) noexcept;

 private:
  void Double(Limb* z) noexcept { DoubleModulo(z, modulus_.m, modulus_.n, product_); }
  // PowerOfTwo without square_.
  void MakePower(Limb* z, size_t e) noexcept;
  // z := z + x mod m, for z, x < m.
  void Sum(Limb* z, const Limb* x) noexcept;
  // z := x * y / B^n mod m, for x * y < m B^n.
  void WideProduct(Limb* z, const Limb* x, const Limb* y) noexcept;

  MontgomeryModulus modulus_;
  Limb* product_;  // [2n]
  Limb* square_;   // [n], B^2n mod m
  Limb* spare_;    // [2n]
};

}  // namespace mirolta
