// Powers with a secret exponent modulo odd numbers.
#pragma once

#include "limb.h"

namespace mirolta {

// SecretPower: z := x^e mod m.
struct SecretPower {
  Limb* z;        // [n]
  const Limb* x;  // [xn]
  size_t xn;
  const Limb* e;  // [en]
  size_t en;
  size_t exponent_bits;  // e is below 2^exponent_bits, which is public
  const Limb* m;         // [n], odd and above 1; m[n - 1] != 0
  size_t n;
  const Limb* square;  // [n], B^2n mod m, or null if it is not known
  Limb factor;         // by which e is split (SplitExponent): random, with its top bit set
};

// RaiseToSecrets computes count powers, 1 or 2. Two are interleaved where that is faster.
// Alias:  z overlaps nothing.
// Errors: false if memory runs out.
// Time:   depends on the lengths, exponent_bits and the bit lengths of the moduli only: no branch and no address
//         depends on x, e or other bits of m.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 14.82.
[[nodiscard]] bool RaiseToSecrets(const SecretPower* powers, size_t count) noexcept;

// SecretPowerMethod: one way to compute that many powers, for moduli of least_bits to most_bits.
struct SecretPowerMethod {
  size_t powers;
  size_t least_bits;
  size_t most_bits;
  bool (*raise)(const SecretPower* powers);
};

extern const KernelList<const SecretPowerMethod*> kSecretPowerKernels;

// ChooseSecretPower returns the first method of kSecretPowerKernels for that many powers modulo
// numbers of up to modulus_bits and a processor with `features`, null if there is none. Every modulus
// has a method for one power.
const SecretPowerMethod* ChooseSecretPower(size_t powers, size_t modulus_bits,
                                           uint32_t features) noexcept;

}  // namespace mirolta
