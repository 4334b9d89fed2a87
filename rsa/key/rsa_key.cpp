#include "rsa_key.h"

#include <initializer_list>

#include "number_theory.h"

namespace mirolta {

namespace {

constexpr uint32_t kUsualPublicExponent = 65537;

// A modulus of zero is a number that the caller has set wrong.
HRESULT FromStep(HRESULT status) {
  return status == DISP_E_DIVBYZERO ? E_INVALIDARG : status;
}

HRESULT IsCoprime(bool* result, const BigInt& a, const BigInt& b) {
  BigInt divisor;
  const HRESULT status = Gcd(divisor, a, b);
  // Not by comparing with a number 1, whose making may fail.
  if (SUCCEEDED(status)) *result = divisor.bitLength() == 1 && !divisor.IsNegative();
  return status;
}

// Advances e until it has an inverse modulo both p-1 and q-1.
HRESULT FindPublicExponent(BigInt& e, const BigInt& p_less_1, const BigInt& q_less_1) {
  if (e.IsZero()) e = BigInt(kUsualPublicExponent);
  HRESULT status = e.status();
  if (SUCCEEDED(status) && !e.IsOdd()) status = e.add(BigInt(1));
  const BigInt step(2);
  while (SUCCEEDED(status)) {
    bool coprime = false;
    status = IsCoprime(&coprime, p_less_1, e);
    if (SUCCEEDED(status) && coprime) status = IsCoprime(&coprime, q_less_1, e);
    if (FAILED(status) || coprime) break;
    status = e.add(step);
  }
  return status;
}

}  // namespace

void RsaKey::Reset() {
  for (BigInt* number : {&n, &e, &p, &q, &d}) *number = BigInt();
}

HRESULT BuildKey(RsaKey& key, const BigInt& first_start, const BigInt& second_start) {
  BigInt first = first_start;
  BigInt second = second_start;
  HRESULT status = NextPrime(first);
  if (SUCCEEDED(status)) status = NextPrime(second);
  return FAILED(status) ? status : BuildKeyFromPrimes(key, first, second);
}

HRESULT BuildKeyFromPrimes(RsaKey& key, BigInt& first, BigInt& second) {
  RsaKey made;
  made.e = key.e;
  made.p.Swap(first);
  made.q.Swap(second);
  if (made.p > made.q) made.p.Swap(made.q);

  made.n = made.p * made.q;
  const BigInt p_less_1 = made.p - BigInt(1);
  const BigInt q_less_1 = made.q - BigInt(1);
  const BigInt order = p_less_1 * q_less_1;
  const BigInt* const steps[] = {&made.n, &p_less_1, &q_less_1, &order};
  for (const BigInt* step : steps) {
    if (FAILED(step->status())) return step->status();
  }
  HRESULT status = FindPublicExponent(made.e, p_less_1, q_less_1);
  if (SUCCEEDED(status)) status = Inverse(made.d, made.e, order);
  if (FAILED(status)) return status;

  key.n.Swap(made.n);
  key.e.Swap(made.e);
  key.p.Swap(made.p);
  key.q.Swap(made.q);
  key.d.Swap(made.d);
  return S_OK;
}

HRESULT RsaEncrypt(BigInt& r, const RsaKey& key, const BigInt& m) {
  return FromStep(ModExp(r, m, key.e, key.n));
}

HRESULT RsaDecrypt(BigInt& r, const RsaKey& key, const BigInt& c) {
  return FromStep(ModExp(r, c, key.d, key.n));
}

namespace {

// The residue of c^d modulo one prime: r = (c mod prime)^(d mod (prime-1)) mod prime.
HRESULT PowerModuloPrime(BigInt& r, const BigInt& c, const BigInt& d, const BigInt& prime,
                         const BigInt& prime_less_1) {
  BigInt reduced;
  BigInt exponent;
  HRESULT status = Remainder(reduced, c, prime);
  if (SUCCEEDED(status)) status = Remainder(exponent, d, prime_less_1);
  return FAILED(status) ? status : ModExp(r, reduced, exponent, prime);
}

HRESULT DecryptWithPrimes(BigInt& r, const RsaKey& key, const BigInt& c) {
  const BigInt p_less_1 = key.p - BigInt(1);
  const BigInt q_less_1 = key.q - BigInt(1);
  BigInt d;
  BigInt p_inverse;
  HRESULT status = Inverse(d, key.e, p_less_1 * q_less_1);
  if (SUCCEEDED(status)) status = Inverse(p_inverse, key.p, key.q);
  if (FAILED(status)) return status;

  BigInt m1;
  BigInt m2;
  status = PowerModuloPrime(m1, c, d, key.p, p_less_1);
  if (SUCCEEDED(status)) status = PowerModuloPrime(m2, c, d, key.q, q_less_1);
  if (SUCCEEDED(status) && m2 < m1) status = m2.add(key.q);
  if (FAILED(status)) return status;

  BigInt result = m1 + key.p * (((m2 - m1) * p_inverse) % key.q);
  if (FAILED(result.status())) return result.status();
  r.Swap(result);
  return S_OK;
}

}  // namespace

HRESULT RsaDecryptWithPrimes(BigInt& r, const RsaKey& key, const BigInt& c) {
  return FromStep(DecryptWithPrimes(r, key, c));
}

LONG BlockSize(const BigInt& modulus) {
  const uint64_t bits = modulus.bitLength();
  if (bits == 0) return 0;
  return static_cast<LONG>(bits % 8 == 0 ? bits / 8 - 1 : bits / 8);
}

}  // namespace mirolta
