// RSA keys: generation and the primitives, without padding.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// RsaPrimeValues: the values that decryption with the primes precomputes, and the numbers they are
// for.
// Source: RFC 8017, 3.2: dP, dQ and, with p and q swapped, qInv.
struct RsaPrimeValues {
  BigInt e;
  BigInt p;
  BigInt q;
  BigInt d_p;        // the inverse of e modulo (p-1)(q-1), modulo p-1
  BigInt d_q;        // the same modulo q-1
  BigInt p_inverse;  // of p modulo q
  BigInt p_square;   // B^2n mod p, of a p of n limbs
  BigInt q_square;   // the same of q
};

// RsaKey: a key, all zero where unset.
// Source: RFC 8017, 3.
struct RsaKey {
  BigInt n;  // modulus
  BigInt e;  // public exponent
  BigInt p;  // the primes, p <= q in generated keys
  BigInt q;
  BigInt d;  // secret exponent
  // Of these or of earlier numbers. Code that changes a number drops them, so that no secret stays.
  RsaPrimeValues values;

  void Reset();
  void DropValues() { values = RsaPrimeValues(); }
};

// BuildKey generates a key from the next primes at or after two starting values. Small starting
// values may give the same prime twice. The public exponent is the first odd number from key.e on,
// or from 65537 if that is zero, that is coprime to p - 1 and q - 1; d is its inverse modulo
// (p - 1)(q - 1).
// Errors: E_OUTOFMEMORY; the key is unchanged.
// Time:   depends on the values.
// Source: RFC 8017, 3.1 and 3.2.
HRESULT BuildKey(RsaKey& key, const BigInt& first_start, const BigInt& second_start);

// BuildKeyFromPrimes does the same with given primes, in either order, which it moves from.
HRESULT BuildKeyFromPrimes(RsaKey& key, BigInt& first, BigInt& second);

// BuildRandomKey does the same from random starting values of byte_size / 2 bytes. With exact_size
// both have their two top bits set, and the modulus has exactly 16 * (byte_size / 2) bits;
// otherwise the second value is a byte longer. Sizes below 4 give larger moduli, since no prime
// below 1229 is found.
// Errors: E_INVALIDARG for byte_size < 1, and for 1 with exact_size, where no two different
//         starting values exist; those of Random and BuildKey. The key is unchanged.
HRESULT BuildRandomKey(RsaKey& key, LONG byte_size, bool exact_size);

// RsaEncrypt: r := m^e mod n.
// Errors: E_INVALIDARG for n = 0; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the values.
// Source: RFC 8017, 5.1.1.
HRESULT RsaEncrypt(BigInt& r, const RsaKey& key, const BigInt& m);

// RsaDecrypt: r := c^d mod n, 1 mod n for d = 0.
// Errors: E_INVALIDARG for n = 0; E_FAIL if the generator cannot be seeded; E_OUTOFMEMORY. r is
//         unchanged.
// Time:   depends on lengths only, as SecretPowerModulo says, for odd n of more than two limbs; else
//         on the values.
// Source: RFC 8017, 5.1.2, step 2a.
HRESULT RsaDecrypt(BigInt& r, const RsaKey& key, const BigInt& c);

// RsaDecryptWithPrimes computes the same from e, p and q alone. The first call for these numbers
// computes key.values, which takes up to half the time of a short RsaDecrypt; later calls use them.
// Errors: E_INVALIDARG if p or q is 0 or 1; E_FAIL if the generator cannot be seeded; E_OUTOFMEMORY.
//         r is unchanged.
// Time:   depends on lengths only, as SecretPowersModuloPrimes says, for odd p <= q of more than one
//         limb; else, and in the first call, on the values.
// Source: RFC 8017, 5.1.2, step 2b; Garner's algorithm, Knuth TAOCP 2, 4.3.2.
HRESULT RsaDecryptWithPrimes(BigInt& r, RsaKey& key, const BigInt& c);

// BlockSize returns the most bytes whose every value is below the modulus, 0 for the modulus 0.
LONG BlockSize(const BigInt& modulus);

}  // namespace mirolta
