// The private operation on limbs, in constant time.
#pragma once

#include "rsa_key.h"
#include "secret_power.h"

namespace mirolta {

// DrawFactors sets factors to random limbs with their top bits set, from the module's generator.
// Errors: E_FAIL if it cannot be seeded.
HRESULT DrawFactors(Limb* factors, size_t count) noexcept;

// JoinResidues: z := the number that is m1 mod p and m2 mod q, for m1 < p and m2 < q.
// Shapes: p[pn], q[qn], p_inverse[qn] of p modulo q, m1[qn], its limbs from pn on zero; m2[qn],
//         destroyed; z[pn + qn]; p <= q, q odd and above 1, q[qn - 1] != 0, pn <= qn; q_square[qn] is
//         B^2qn mod q, or null.
// Alias:  none.
// Errors: false if memory runs out.
// Time:   depends on the lengths only.
// Source: Garner's algorithm, Knuth TAOCP 2, 4.3.2.
[[nodiscard]] bool JoinResidues(Limb* z, const Limb* m1, Limb* m2, const Limb* p, size_t pn,
                                const Limb* q, size_t qn, const Limb* p_inverse,
                                const Limb* q_square) noexcept;

// SecretPowerModulo: r := c^d mod n, with the sign flag that ModExp gives. Where *done stays false,
// n is even, negative, or of two limbs or fewer, or d = 0, and nothing is computed.
// Errors: E_FAIL as DrawFactors; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the lengths of the numbers in limbs and on the bit length of n only.
HRESULT SecretPowerModulo(bool* done, BigInt& r, const BigInt& c, const BigInt& d, const BigInt& n);

// SecretPowersModuloPrimes: r := the number that is c^values.d_p mod p and c^values.d_q mod q. Where
// *done stays false, p or q is even, a number is negative, or p > q, and nothing is computed.
// Errors: E_FAIL as DrawFactors; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the lengths of the numbers in limbs and on the bit lengths of p and q only.
HRESULT SecretPowersModuloPrimes(bool* done, BigInt& r, const RsaPrimeValues& values,
                                 const BigInt& c);

}  // namespace mirolta
