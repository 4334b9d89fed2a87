#include "private_operation.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "secret_residues.h"

namespace mirolta {

namespace {

constexpr uint32_t kDrawBits = 16;
// An exponent modulo so short a number is no secret: its modulus is factored in seconds.
constexpr size_t kShortLimbs = 2;

size_t LimbsOf(const BigInt& n) {
  return LimbsForWords(n.Used());
}

// z := the limbs of n, then zeros.
// Shapes: z[size], size >= LimbsOf(n).
void CopyNumber(Limb* z, size_t size, const BigInt& n) {
  LimbsFromWords(z, n.Magnitude().Words(), n.Used());
  ZeroLimbs(z + LimbsOf(n), size - LimbsOf(n));
}

// Whether powers modulo m are computed here: m is odd, above 1 and not negative.
bool IsModulus(const BigInt& m) {
  return m.IsOdd() && !m.IsNegative() && m.Used() != 0 && m.GetWord(m.Used() - 1) != 0 &&
         (m.Used() != 1 || m.GetWord(0) != 1);
}

}  // namespace

HRESULT DrawFactors(Limb* factors, size_t count) noexcept {
  const RandomSource& source = CurrentRandomSource();
  // The generator mixes entropy with the seed, so that no tick of the clock needs to be awaited.
  if (!source.seed(GetTickCount())) return E_FAIL;
  for (size_t i = 0; i < count; ++i) {
    Limb factor = 0;
    for (uint32_t bit = 0; bit < kLimbBits; bit += kDrawBits) {
      factor |= static_cast<Limb>(Limb{source.next() & 0xFFFFu} << bit);
    }
    factors[i] = static_cast<Limb>(factor | Limb{1} << (kLimbBits - 1));
  }
  return S_OK;
}

bool JoinResidues(Limb* z, const Limb* m1, Limb* m2, const Limb* p, size_t pn, const Limb* q,
                  size_t qn, const Limb* p_inverse, const Limb* q_square) noexcept {
  const CheckedSize residue_limbs = SecretResidues::MemoryLimbs(qn);
  LimbScratch memory(residue_limbs + CheckedSize(pn) + 2 * CheckedSize(qn));
  if (memory.Get() == nullptr) return false;
  Limb* const factor = memory.Get() + residue_limbs.Value();
  Limb* const product = factor + qn;
  SecretResidues by_q(q, qn, memory.Get(), q_square);
  // m1 < p <= q: one addition of q is enough.
  by_q.Subtract(m2, m2, m1);
  by_q.Enter(factor, m2, qn);
  by_q.Multiply(factor, factor, p_inverse);
  const LimbKernels& k = CurrentLimbKernels();
  k.multiply(product, factor, qn, p, pn);
  CopyLimbs(z, m1, qn);
  ZeroLimbs(z + qn, pn);
  k.add(z, z, product, pn + qn);
  return true;
}

HRESULT SecretPowerModulo(bool* done, BigInt& r, const BigInt& c, const BigInt& d,
                          const BigInt& n) {
  const size_t size = LimbsOf(n);
  if (!IsModulus(n) || size <= kShortLimbs || d.IsZero()) return S_OK;
  *done = true;
  const size_t xn = LimbsOf(c);
  const size_t en = LimbsOf(d);
  LimbScratch memory(CheckedSize(xn) + CheckedSize(en) + 2 * CheckedSize(size) + 1);
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* const factor = memory.Get();
  Limb* const base = factor + 1;
  Limb* const exponent = base + xn;
  Limb* const modulus = exponent + en;
  Limb* const power = modulus + size;
  HRESULT status = DrawFactors(factor, 1);
  if (FAILED(status)) return status;
  CopyNumber(base, xn, c);
  CopyNumber(exponent, en, d);
  CopyNumber(modulus, size, n);
  // An exponent that is no longer than the modulus takes the modulus's time.
  const size_t bits = (en > size ? en : size) * kLimbBits;
  const SecretPower raised = {power, base, xn, exponent, en, bits, modulus, size, nullptr, *factor};
  if (!RaiseToSecrets(&raised, 1)) return E_OUTOFMEMORY;
  status = r.AssignLimbs(power, size);
  if (SUCCEEDED(status)) r.SetSignFlag(c.SignFlag() && d.IsOdd());
  return status;
}

HRESULT SecretPowersModuloPrimes(bool* done, BigInt& r, const RsaPrimeValues& values,
                                 const BigInt& c) {
  const BigInt* const numbers[] = {&c,          &values.p,   &values.q,
                                   &values.d_p, &values.d_q, &values.p_inverse};
  for (const BigInt* number : numbers) {
    if (number->SignFlag()) return S_OK;
  }
  const size_t qn = LimbsOf(values.q);
  if (!IsModulus(values.p) || !IsModulus(values.q) || values.p > values.q ||
      LimbsOf(values.p_inverse) > qn || LimbsOf(values.d_p) > qn || LimbsOf(values.d_q) > qn) {
    return S_OK;
  }
  *done = true;
  const size_t pn = LimbsOf(values.p);
  const size_t xn = LimbsOf(c);
  LimbScratch memory(CheckedSize(xn) + 9 * CheckedSize(qn) + 3 * CheckedSize(pn) + 2);
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* const factors = memory.Get();
  Limb* const base = factors + 2;
  Limb* const p = base + xn;
  Limb* const q = p + pn;
  Limb* const d_p = q + qn;
  Limb* const d_q = d_p + qn;
  Limb* const p_inverse = d_q + qn;
  Limb* const m1 = p_inverse + qn;
  Limb* const m2 = m1 + qn;
  Limb* const p_square = m2 + qn;
  Limb* const q_square = p_square + pn;
  Limb* const result = q_square + qn;
  HRESULT status = DrawFactors(factors, 2);
  if (FAILED(status)) return status;
  CopyNumber(base, xn, c);
  CopyNumber(p, pn, values.p);
  CopyNumber(q, qn, values.q);
  CopyNumber(d_p, qn, values.d_p);
  CopyNumber(d_q, qn, values.d_q);
  CopyNumber(p_inverse, qn, values.p_inverse);
  CopyNumber(p_square, pn, values.p_square);
  CopyNumber(q_square, qn, values.q_square);
  ZeroLimbs(m1 + pn, qn - pn);
  const SecretPower powers[] = {
      {m1, base, xn, d_p, pn, LimbBits(p, pn), p, pn, p_square, factors[0]},
      {m2, base, xn, d_q, qn, LimbBits(q, qn), q, qn, q_square, factors[1]}};
  if (!RaiseToSecrets(powers, 2) ||
      !JoinResidues(result, m1, m2, p, pn, q, qn, p_inverse, q_square)) {
    return E_OUTOFMEMORY;
  }
  status = r.AssignLimbs(result, pn + qn);
  if (SUCCEEDED(status)) r.SetSignFlag(false);
  return status;
}

}  // namespace mirolta
