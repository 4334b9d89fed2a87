#include "gcd.h"

#include "half_gcd.h"
#include "lehmer_gcd.h"
#include "limb_basics.h"

namespace mirolta {

namespace {

// From this length on, numbers of different lengths are divided first: the sequence has room for two numbers
// of the longer one's length.
constexpr size_t kLeastDivided = kHalfGcdLengths.cofactor;

bool IsMuchShorter(const BigInt& a, const BigInt& b) {
  const size_t an = LimbsForWords(a.Used()), bn = LimbsForWords(b.Used());
  return kHasHalfGcd && bn >= kLeastDivided && an + bn / 16 < bn;
}

// Runs Euclid's algorithm on two magnitudes.
bool RunLehmer(LehmerGcd* run, const BigInt& r0, const BigInt& r1, bool with_cofactor) {
  const size_t n0 = LimbsForWords(r0.Used());
  const size_t n1 = LimbsForWords(r1.Used());
  if (!run->Reserve(n0, n1, with_cofactor)) return false;
  LimbsFromWords(run->X(), r0.Magnitude().Words(), r0.Used());
  LimbsFromWords(run->Y(), r1.Magnitude().Words(), r1.Used());
  run->Run();
  return true;
}

// g := the greatest common divisor's magnitude; *odd: whether Euclid takes an odd number of steps.
HRESULT GcdInSteps(BigInt& g, bool* odd, const BigInt& a, const BigInt& b) {
  LehmerGcd run;
  if (!RunLehmer(&run, a, b, false)) return E_OUTOFMEMORY;
  *odd = run.OddSteps();
  return g.AssignLimbs(run.Gcd(), run.GcdLimbs());
}

// t := the magnitude of the cofactor of a; likewise.
HRESULT CofactorInSteps(BigInt& t, bool* odd, const BigInt& m, const BigInt& a) {
  LehmerGcd run;
  if (!RunLehmer(&run, m, a, true)) return E_OUTOFMEMORY;
  *odd = run.OddSteps();
  return t.AssignLimbs(run.Cofactor(), run.CofactorLimbs());
}

// The same where a is much shorter than m. After one step the sequence is that of a and m mod a, with a
// cofactor s of m mod a, which is m's own: g = +-(s m - t a), the upper sign for an even number of steps.
HRESULT CofactorByDivision(BigInt& t, bool* odd, const BigInt& m, const BigInt& a) {
  BigInt s, g;
  {
    BigInt rest;
    HRESULT status = Remainder(rest, m, a);
    if (FAILED(status)) return status;
    LehmerGcd run;
    if (!RunLehmer(&run, a, rest, true)) return E_OUTOFMEMORY;
    *odd = !run.OddSteps();
    status = s.AssignLimbs(run.Cofactor(), run.CofactorLimbs());
    if (SUCCEEDED(status)) status = g.AssignLimbs(run.Gcd(), run.GcdLimbs());
    if (FAILED(status)) return status;
  }
  // Of magnitudes: that of m is taken with the sign flag of m, which s and g get too.
  s.SetSignFlag(false);
  g.SetSignFlag(m.SignFlag());
  HRESULT status = Multiply(s, s, m);
  if (SUCCEEDED(status)) status = *odd ? Add(s, s, g) : Subtract(s, s, g);
  if (SUCCEEDED(status)) status = Divide(t, s, a);
  if (SUCCEEDED(status)) t.SetSignFlag(false);
  return status;
}

// What GcdInSteps computes, with a division first where the lengths differ. If a is the shorter one the division
// is two steps: the first of them exchanges the numbers.
HRESULT GcdMagnitude(BigInt& g, bool* odd, const BigInt& a, const BigInt& b) {
  BigInt rest;
  if (IsMuchShorter(b, a) && !b.IsZero()) {
    const HRESULT status = Remainder(rest, a, b);
    if (FAILED(status)) return status;
    const HRESULT found = GcdInSteps(g, odd, b, rest);
    *odd = !*odd;
    return found;
  }
  if (IsMuchShorter(a, b) && !a.IsZero()) {
    const HRESULT status = Remainder(rest, b, a);
    return FAILED(status) ? status : GcdInSteps(g, odd, a, rest);
  }
  return GcdInSteps(g, odd, a, b);
}

// What CofactorInSteps and CofactorByDivision compute. If m is the shorter one the division is two steps likewise.
HRESULT CofactorMagnitude(BigInt& t, bool* odd, const BigInt& m, const BigInt& a) {
  if (IsMuchShorter(a, m) && !a.IsZero()) return CofactorByDivision(t, odd, m, a);
  if (IsMuchShorter(m, a)) {
    BigInt rest;
    const HRESULT status = Remainder(rest, a, m);
    return FAILED(status) ? status : CofactorInSteps(t, odd, m, rest);
  }
  return CofactorInSteps(t, odd, m, a);
}

}  // namespace

HRESULT Gcd(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  BigInt g;
  bool odd = false;
  const HRESULT status = GcdMagnitude(g, &odd, a, b);
  if (FAILED(status)) return status;
  // A remainder has its dividend's sign flag, so that r(i) has that of a or b by the parity of i.
  const bool negative = odd ? b.SignFlag() : a.SignFlag();
  r.Swap(g);
  r.SetSignFlag(negative);
  return S_OK;
}

HRESULT Inverse(BigInt& r, const BigInt& a, const BigInt& m) noexcept {
  const HRESULT failure = FirstFailure(a, m);
  if (FAILED(failure)) return failure;
  if (m.IsZero()) return DISP_E_DIVBYZERO;
  BigInt t;
  bool odd = false;
  HRESULT status = CofactorMagnitude(t, &odd, m, a);
  if (FAILED(status)) return status;
  // Equal signs: all quotients are positive, and the cofactors alternate in sign from the second
  // step on. Different signs: all quotients are negative, and no cofactor is.
  if (a.SignFlag() == m.SignFlag() && !odd && !t.IsZero()) {
    t.SetSignFlag(true);
    status = t.Add(m);
    if (FAILED(status)) return status;
  }
  r.Swap(t);
  return S_OK;
}

}  // namespace mirolta
