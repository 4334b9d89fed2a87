#include "gcd.h"

#include "lehmer_gcd.h"
#include "limb_basics.h"

namespace mirolta {

namespace {

// Runs Euclid's algorithm on two magnitudes.
bool RunLehmer(LehmerGcd* run, const BigInt& r0, const BigInt& r1, bool with_cofactor) {
  const size_t n0 = LimbsForWords(r0.Used());
  const size_t n1 = LimbsForWords(r1.Used());
  if (!run->Reserve(n0, n1, with_cofactor)) return false;
  LimbsFromWords(run->X(), r0.Magnitude().Words(), r0.Used());
  LimbsFromWords(run->Y(), r1.Magnitude().Words(), r1.Used());
  return run->Run();
}

}  // namespace

HRESULT Gcd(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  LehmerGcd run;
  if (!RunLehmer(&run, a, b, false)) return E_OUTOFMEMORY;
  // A remainder has its dividend's sign flag, so that r(i) has that of a or b by the parity of i.
  const bool negative = run.OddSteps() ? b.SignFlag() : a.SignFlag();
  const HRESULT status = r.AssignLimbs(run.Gcd(), run.GcdLimbs());
  if (SUCCEEDED(status)) r.SetSignFlag(negative);
  return status;
}

HRESULT Inverse(BigInt& r, const BigInt& a, const BigInt& m) noexcept {
  const HRESULT failure = FirstFailure(a, m);
  if (FAILED(failure)) return failure;
  if (m.IsZero()) return DISP_E_DIVBYZERO;
  LehmerGcd run;
  if (!RunLehmer(&run, m, a, true)) return E_OUTOFMEMORY;
  BigInt t;
  HRESULT status = t.AssignLimbs(run.Cofactor(), run.CofactorLimbs());
  if (FAILED(status)) return status;
  // Equal signs: all quotients are positive, and the cofactors alternate in sign from the second
  // step on. Different signs: all quotients are negative, and no cofactor is.
  if (a.SignFlag() == m.SignFlag() && !run.OddSteps() && !t.IsZero()) {
    t.SetSignFlag(true);
    status = t.Add(m);
    if (FAILED(status)) return status;
  }
  r.Swap(t);
  return S_OK;
}

}  // namespace mirolta
