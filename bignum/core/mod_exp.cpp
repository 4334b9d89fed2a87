#include "mod_exp.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "power_modulo.h"

namespace mirolta {

namespace {

// r := |x|^|e| mod |m|, |m| > 1, e != 0.
HRESULT PowerOfSizes(BigInt& r, const BigInt& x, const BigInt& e, const BigInt& m) {
  const size_t xn = LimbsForWords(x.Used());
  const size_t en = LimbsForWords(e.Used());
  const size_t n = LimbsForWords(m.Used());
  LimbScratch memory(CheckedSize(xn) + CheckedSize(en) + 2 * CheckedSize(n));
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* const base = memory.Get();
  Limb* const exponent = base + xn;
  Limb* const modulus = exponent + en;
  Limb* const power = modulus + n;
  LimbsFromWords(base, x.Magnitude().Words(), x.Used());
  LimbsFromWords(exponent, e.Magnitude().Words(), e.Used());
  LimbsFromWords(modulus, m.Magnitude().Words(), m.Used());
  if (!PowerModulo(power, base, xn, exponent, en, modulus, n)) return E_OUTOFMEMORY;
  return r.AssignLimbs(power, n);
}

}  // namespace

HRESULT ModExp(BigInt& r, const BigInt& base, const BigInt& e, const BigInt& m) noexcept {
  HRESULT status = FirstFailure(base, e);
  if (SUCCEEDED(status)) status = m.Status();
  if (FAILED(status)) return status;
  if (m.IsZero()) return DISP_E_DIVBYZERO;
  const bool zero_exponent = e.IsZero();
  const bool unit = m.BitLength() == 1;
  const bool negative_modulus = m.IsNegative();
  const bool negative = base.SignFlag() && e.IsOdd() && !negative_modulus;
  if (zero_exponent) {
    BigInt one(unit ? 0 : 1);
    if (FAILED(one.Status())) return one.Status();
    r.Swap(one);
    return S_OK;
  }
  if (unit || negative_modulus) {
    status = r.AssignLimbs(nullptr, 0);
  } else {
    status = PowerOfSizes(r, base, e, m);
  }
  if (SUCCEEDED(status)) r.SetSignFlag(negative);
  return status;
}

}  // namespace mirolta
