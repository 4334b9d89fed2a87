// Greatest common divisors and inverses of numbers of either sign.
#pragma once

#include "big_int.h"

namespace mirolta {

// Gcd runs Euclid's remainders a := a mod b, b := b mod a until one is zero. The other one, with
// its sign flag, is the result.
// Alias:  r may be an operand.
// Errors: the status of an operand; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the values.
// Source: Lehmer 1938; Knuth TAOCP 2, 4.5.2, algorithm L.
HRESULT Gcd(BigInt& r, const BigInt& a, const BigInt& b) noexcept;

// Inverse computes the cofactor t of the extended Euclidean algorithm on m and a, plus m if t < 0:
// a * t = gcd(a, m) mod m, and t = 0 for a = 0. If a is coprime to m, t is the inverse.
// Alias:  r may be an operand.
// Errors: the status of an operand; DISP_E_DIVBYZERO for m = 0; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the values.
// Source: as for Gcd.
HRESULT Inverse(BigInt& r, const BigInt& a, const BigInt& m) noexcept;

}  // namespace mirolta
