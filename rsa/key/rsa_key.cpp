#include "rsa_key.h"

#include <initializer_list>

#include "divide.h"
#include "gcd.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "mod_exp.h"
#include "montgomery_pair.h"
#include "next_prime.h"
#include "private_operation.h"

namespace mirolta {

namespace {

constexpr uint32_t kUsualPublicExponent = 65537;

// Division by a zero modulus is an invalid key of the caller.
HRESULT FromStep(HRESULT status) {
  return status == DISP_E_DIVBYZERO ? E_INVALIDARG : status;
}

HRESULT IsCoprime(bool* result, const BigInt& a, const BigInt& b) {
  BigInt divisor;
  const HRESULT status = Gcd(divisor, a, b);
  // Comparing with BigInt(1) could fail, since that allocates.
  if (SUCCEEDED(status)) *result = divisor.BitLength() == 1 && !divisor.IsNegative();
  return status;
}

// Advances e until it is coprime to p - 1 and q - 1.
HRESULT FindPublicExponent(BigInt& e, const BigInt& p_less_1, const BigInt& q_less_1) {
  if (e.IsZero()) e = BigInt(kUsualPublicExponent);
  HRESULT status = e.Status();
  if (SUCCEEDED(status) && !e.IsOdd()) status = e.Add(BigInt(1));
  const BigInt step(2);
  while (SUCCEEDED(status)) {
    bool coprime = false;
    status = IsCoprime(&coprime, p_less_1, e);
    if (SUCCEEDED(status) && coprime) status = IsCoprime(&coprime, q_less_1, e);
    if (FAILED(status) || coprime) break;
    status = e.Add(step);
  }
  return status;
}

}  // namespace

void RsaKey::Reset() {
  for (BigInt* number : {&n, &e, &p, &q, &d}) *number = BigInt();
  DropValues();
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
    if (FAILED(step->Status())) return step->Status();
  }
  HRESULT status = FindPublicExponent(made.e, p_less_1, q_less_1);
  if (SUCCEEDED(status)) status = Inverse(made.d, made.e, order);
  if (FAILED(status)) return status;

  key.n.Swap(made.n);
  key.e.Swap(made.e);
  key.p.Swap(made.p);
  key.q.Swap(made.q);
  key.d.Swap(made.d);
  key.DropValues();
  return S_OK;
}

HRESULT RsaEncrypt(BigInt& r, const RsaKey& key, const BigInt& m) {
  return FromStep(ModExp(r, m, key.e, key.n));
}

HRESULT RsaDecrypt(BigInt& r, const RsaKey& key, const BigInt& c) {
  HRESULT status = FAILED(c.Status()) ? c.Status() : FirstFailure(key.d, key.n);
  bool done = false;
  if (SUCCEEDED(status)) status = SecretPowerModulo(&done, r, c, key.d, key.n);
  if (SUCCEEDED(status) && !done) status = ModExp(r, c, key.d, key.n);
  return FromStep(status);
}

namespace {

// Whether two numbers have the same magnitude and sign flag. Copies share their magnitude.
bool IsSame(const BigInt& a, const BigInt& b) {
  return a.SignFlag() == b.SignFlag() && (&a.Magnitude() == &b.Magnitude() ||
                                          BigMagnitude::Compare(a.Magnitude(), b.Magnitude()) == 0);
}

// r := B^2n mod m, where m has n limbs.
HRESULT SquareOfBase(BigInt& r, const BigInt& m) {
  const size_t size = 2 * LimbsForWords(m.Used()) + 1;
  LimbScratch limbs{CheckedSize(size)};
  if (limbs.Get() == nullptr) return E_OUTOFMEMORY;
  ZeroLimbs(limbs.Get(), size - 1);
  limbs.Get()[size - 1] = 1;
  BigInt power;
  const HRESULT status = power.AssignLimbs(limbs.Get(), size);
  return FAILED(status) ? status : Remainder(r, power, m);
}

HRESULT MakeValues(RsaPrimeValues& made, const RsaKey& key) {
  const BigInt p_less_1 = key.p - BigInt(1);
  const BigInt q_less_1 = key.q - BigInt(1);
  BigInt d;
  HRESULT status = Inverse(d, key.e, p_less_1 * q_less_1);
  if (SUCCEEDED(status)) status = Inverse(made.p_inverse, key.p, key.q);
  if (SUCCEEDED(status)) status = Remainder(made.d_p, d, p_less_1);
  if (SUCCEEDED(status)) status = Remainder(made.d_q, d, q_less_1);
  if (SUCCEEDED(status)) status = SquareOfBase(made.p_square, key.p);
  if (SUCCEEDED(status)) status = SquareOfBase(made.q_square, key.q);
  if (FAILED(status)) return status;
  made.e = key.e;
  made.p = key.p;
  made.q = key.q;
  return S_OK;
}

// r := (c mod prime)^exponent mod prime, c^d mod prime for exponent = d mod (prime - 1).
HRESULT PowerModuloPrime(BigInt& r, const BigInt& c, const BigInt& exponent, const BigInt& prime) {
  BigInt reduced;
  const HRESULT status = Remainder(reduced, c, prime);
  return FAILED(status) ? status : ModExp(r, reduced, exponent, prime);
}

// The steps for any numbers.
HRESULT PowersModuloAny(BigInt& r, const RsaPrimeValues& values, const BigInt& c) {
  BigInt m1;
  BigInt m2;
  HRESULT status = PowerModuloPrime(m1, c, values.d_p, values.p);
  if (SUCCEEDED(status)) status = PowerModuloPrime(m2, c, values.d_q, values.q);
  if (SUCCEEDED(status) && m2 < m1) status = m2.Add(values.q);
  if (FAILED(status)) return status;

  BigInt result = m1 + values.p * (((m2 - m1) * values.p_inverse) % values.q);
  if (FAILED(result.Status())) return result.Status();
  r.Swap(result);
  return S_OK;
}

// Sets *limb to n; false if n does not fit or has the sign flag.
bool IsLimb(Limb* limb, const BigInt& n) {
  if (n.SignFlag() || n.Used() > kLimbWords) return false;
  *limb = 0;
  LimbsFromWords(limb, n.Magnitude().Words(), n.Used());
  return true;
}

// The same for primes of one limb, where handling BigInts costs more than the arithmetic. *done
// stays false where it does not apply.
HRESULT PowersModuloShortPrimes(bool* done, BigInt& r, const RsaPrimeValues& values,
                                const BigInt& c) {
  Limb p = 0, q = 0, d_p = 0, d_q = 0, p_inverse = 0;
  const bool are_limbs = IsLimb(&p, values.p) && IsLimb(&q, values.q) && IsLimb(&d_p, values.d_p) &&
                         IsLimb(&d_q, values.d_q) && IsLimb(&p_inverse, values.p_inverse);
  // Odd primes are above 1 here: for p = 1 or q = 1 the inverse modulo (p - 1)(q - 1) = 0 has
  // failed.
  const bool are_odd = (p & q & 1) != 0;
  if (!are_limbs || !are_odd || c.SignFlag()) return S_OK;
  const size_t size = LimbsForWords(c.Used());
  LimbScratch limbs{CheckedSize(size)};
  if (limbs.Get() == nullptr) return E_OUTOFMEMORY;
  LimbsFromWords(limbs.Get(), c.Magnitude().Words(), c.Used());
  const LimbDivisor by_q = PrepareDivisor(q);
  PairPower powers[2] = {{ModLimb(limbs.Get(), size, PrepareDivisor(p)), d_p, p},
                         {ModLimb(limbs.Get(), size, by_q), d_q, q}};
  Limb residues[2];
  PowerPair(residues, powers);

  // (m2 - m1) mod q by adding q once, which is not enough for every p > q.
  Limb difference = static_cast<Limb>(residues[1] - residues[0]);
  if (residues[1] < residues[0]) {
    const Limb excess = static_cast<Limb>(residues[0] - residues[1]);
    if (excess > q) return S_OK;
    difference = static_cast<Limb>(q - excess);
  }
  const LimbPair product = Product(difference, p_inverse);
  const Limb dividend[2] = {product.low, product.high};
  const LimbPair above = Product(p, ModLimb(dividend, 2, by_q));
  const LimbPair sum = AddPair(above, {residues[0], 0});
  Limb result[2] = {sum.low, sum.high};
  const HRESULT status = r.AssignLimbs(result, 2);
  if (SUCCEEDED(status)) r.SetSignFlag(false);
  *done = SUCCEEDED(status);
  WipeMemory(powers, sizeof powers);
  WipeMemory(residues, sizeof residues);
  WipeMemory(result, sizeof result);
  return status;
}

HRESULT DecryptWithPrimes(BigInt& r, RsaKey& key, const BigInt& c) {
  const RsaPrimeValues& kept = key.values;
  const bool are_made = IsSame(kept.e, key.e) && IsSame(kept.p, key.p) && IsSame(kept.q, key.q);
  RsaPrimeValues made;
  HRESULT status = are_made ? S_OK : MakeValues(made, key);
  if (FAILED(status)) return status;
  const RsaPrimeValues& values = are_made ? kept : made;
  bool done = false;
  status = PowersModuloShortPrimes(&done, r, values, c);
  if (SUCCEEDED(status) && !done) status = SecretPowersModuloPrimes(&done, r, values, c);
  if (SUCCEEDED(status) && !done) status = PowersModuloAny(r, values, c);
  // A failed call keeps no values.
  if (SUCCEEDED(status) && !are_made) key.values = static_cast<RsaPrimeValues&&>(made);
  return status;
}

}  // namespace

HRESULT RsaDecryptWithPrimes(BigInt& r, RsaKey& key, const BigInt& c) {
  return FromStep(DecryptWithPrimes(r, key, c));
}

LONG BlockSize(const BigInt& modulus) {
  const uint64_t bits = modulus.BitLength();
  if (bits == 0) return 0;
  return static_cast<LONG>(bits % 8 == 0 ? bits / 8 - 1 : bits / 8);
}

}  // namespace mirolta
