#include "gcd.h"

#include "limb_basics.h"
#include "lehmer_gcd.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

// Runs Euclid on the sizes of two numbers.
bool RunEuclid(EuclidRun* run, const BigInt& r0, const BigInt& r1, bool with_cofactor) {
  const size_t n0 = LimbsForWords(r0.used());
  const size_t n1 = LimbsForWords(r1.used());
  LimbScratch memory(CheckedSize(n0) + CheckedSize(n1));
  if (memory.get() == nullptr) return false;
  LimbsFromWords(memory.get(), r0.magnitude().digits(), r0.used());
  LimbsFromWords(memory.get() + n0, r1.magnitude().digits(), r1.used());
  return run->Run(memory.get(), n0, memory.get() + n0, n1, with_cofactor);
}

}  // namespace

HRESULT Gcd(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  EuclidRun run;
  if (!RunEuclid(&run, a, b, false)) return E_OUTOFMEMORY;
  // Remainders follow their dividends, so each place keeps its flag.
  const bool negative = run.odd_steps() ? b.negative() : a.negative();
  const HRESULT status = r.AssignLimbs(run.gcd(), run.gcd_limbs());
  if (SUCCEEDED(status)) r.set_negative(negative);
  return status;
}

HRESULT Inverse(BigInt& r, const BigInt& a, const BigInt& m) noexcept {
  const HRESULT failure = FirstFailure(a, m);
  if (FAILED(failure)) return failure;
  if (m.IsZero()) return DISP_E_DIVBYZERO;
  EuclidRun run;
  if (!RunEuclid(&run, m, a, true)) return E_OUTOFMEMORY;
  BigInt t;
  HRESULT status = t.AssignLimbs(run.cofactor(), run.cofactor_limbs());
  if (FAILED(status)) return status;
  // With operands of like signs all quotients are positive and the cofactors alternate in sign from
  // the second step on; with unlike signs all quotients are negative and no cofactor is.
  if (a.negative() == m.negative() && !run.odd_steps() && !t.IsZero()) {
    t.set_negative(true);
    status = t.add(m);
    if (FAILED(status)) return status;
  }
  r.Swap(t);
  return S_OK;
}

}  // namespace mirolta
