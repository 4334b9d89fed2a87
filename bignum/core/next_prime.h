// The Fermat test and the search for primes.
#pragma once

#include "big_int.h"

namespace mirolta {

// IsFermatPrime sets *result to whether a^(n - 1) mod n is 1 for a = 2, 3, 5 and 7. It is false for
// these four primes themselves and true for some composites.
// Errors: the status of n; E_OUTOFMEMORY. *result is unchanged.
// Time:   depends on the value.
// Source: Menezes, van Oorschot and Vanstone, Handbook of Applied Cryptography, 4.9.
HRESULT IsFermatPrime(bool* result, const BigInt& n) noexcept;

// NextPrime advances n to the first number from n on that passes IsFermatPrime and has no divisor
// among the first kTablePrimes primes. It never finds those primes themselves.
// Errors: the status of n; E_OUTOFMEMORY. n is unchanged.
// Time:   depends on the value.
HRESULT NextPrime(BigInt& n) noexcept;

}  // namespace mirolta
