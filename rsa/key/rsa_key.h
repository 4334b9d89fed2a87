// RSA keys: making them, and the raw operation. No padding is applied at this level.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// RsaPrimeValues: what decrypting with the primes needs beside them, and the numbers that it was
// computed from.
struct RsaPrimeValues {
  BigInt e;
  BigInt p;
  BigInt q;
  BigInt d_p;        // the inverse of e modulo (p-1)(q-1), modulo p-1
  BigInt d_q;        // the same modulo q-1
  BigInt p_inverse;  // of p modulo q
};

struct RsaKey {
  BigInt n;  // modulus
  BigInt e;  // public exponent
  BigInt p;  // the primes, p <= q in keys made here
  BigInt q;
  BigInt d;  // secret exponent
  // Of these or of earlier numbers: whoever changes a number drops them, so that nothing stays behind.
  RsaPrimeValues values;

  void Reset();
  void DropValues() { values = RsaPrimeValues(); }
};

// BuildKey makes a key from the next primes at or after two starting values. A public exponent that
// is already set is kept as the first candidate, 65537 otherwise; an even one is made odd, and it
// goes up in steps of two until it has no divisor in common with p-1 and q-1.
// Small starting values can lead to the same prime twice.
// Errors: E_OUTOFMEMORY, the key unchanged.
HRESULT BuildKey(RsaKey& key, const BigInt& first_start, const BigInt& second_start);

// BuildKeyFromPrimes does the same with the primes found, in either order, whose values it takes.
HRESULT BuildKeyFromPrimes(RsaKey& key, BigInt& first, BigInt& second);

// BuildRandomKey starts the primes at random numbers of byte_size / 2 bytes. exact_size gives a
// modulus of exactly 16 * (byte_size / 2) bits, both primes having their two top bits set;
// otherwise the second number is a byte longer. Sizes below 4 give larger moduli, as no prime is
// found below 1229.
// Errors: E_INVALIDARG for a size below 1, and for size 1 with exact_size, where no two different
//         starting values exist; those of Random and BuildKey. The key is unchanged.
HRESULT BuildRandomKey(RsaKey& key, LONG byte_size, bool exact_size);

// RsaEncrypt computes r = m^e mod n, RsaDecrypt r = c^d mod n (1 mod n for d = 0).
// Errors: E_INVALIDARG for n = 0; E_OUTOFMEMORY. r is unchanged.
HRESULT RsaEncrypt(BigInt& r, const RsaKey& key, const BigInt& m);
HRESULT RsaDecrypt(BigInt& r, const RsaKey& key, const BigInt& c);

// RsaDecryptWithPrimes computes the same from e, p and q alone. The first call for these numbers makes
// key.values, which takes up to half the time of a short RsaDecrypt; later ones find them there.
// Errors: E_INVALIDARG if p or q is 0 or 1; E_OUTOFMEMORY. r is unchanged.
// Source: Garner's form of the Chinese remainder theorem, Knuth TAOCP 2, 4.3.2.
HRESULT RsaDecryptWithPrimes(BigInt& r, RsaKey& key, const BigInt& c);

// BlockSize returns the largest byte count whose every value lies below a modulus; 0 for zero.
LONG BlockSize(const BigInt& modulus);

}  // namespace mirolta
