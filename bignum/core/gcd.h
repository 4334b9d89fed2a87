// Greatest common divisor, inverse, powers modulo a number, and primes. All take numbers of either
// sign; results for operands below zero are those of the plain algorithms named here. Results may
// be operands, are unchanged on failure, and every call ends.
#pragma once

#include "big_int.h"

namespace mirolta {

// Gcd runs Euclid's remainders a = a mod b, b = b mod a until one is zero; the other, with its
// flag, is the result.
// Errors: E_OUTOFMEMORY.
HRESULT Gcd(BigInt& r, const BigInt& a, const BigInt& b) noexcept;

// Inverse computes the cofactor t of the extended Euclidean algorithm on m and a, plus m once if t
// is below zero: for a prime to m the number with a * t = 1 mod m, for others the cofactor with
// a * t = gcd(a, m) mod m, and zero for a = 0.
// Errors: DISP_E_DIVBYZERO for m = 0, E_OUTOFMEMORY.
HRESULT Inverse(BigInt& r, const BigInt& a, const BigInt& m) noexcept;

// ModExp computes base^|e| mod m, 1 mod m for e = 0. The remainder has the flag of the power: that
// of the base for odd e. A modulus below zero gives zero unless e is: no power of two is less than
// it, so nothing is left of the Montgomery products.
// Errors: DISP_E_DIVBYZERO for m = 0, E_OUTOFMEMORY.
HRESULT ModExp(BigInt& r, const BigInt& base, const BigInt& e, const BigInt& m) noexcept;

// IsFermatPrime tells whether a^(n-1) mod n is 1 for a = 2, 3, 5 and 7. These four are therefore no
// primes, and some composites are. Errors: E_OUTOFMEMORY, *result unchanged.
HRESULT IsFermatPrime(bool* result, const BigInt& n) noexcept;

// NextPrime advances n to the first number from n on that has no divisor among the primes of
// kTablePrimes and is a Fermat prime; the table's own primes are never found.
// Errors: E_OUTOFMEMORY, n unchanged.
HRESULT NextPrime(BigInt& n) noexcept;

}  // namespace mirolta
