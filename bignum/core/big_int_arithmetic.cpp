#include "big_int.h"
#include "limb_basics.h"
#include "limb_divide.h"
#include "limb_multiply.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

// Quotient and remainder by one division; either may be null.
HRESULT DivideBoth(BigInt* q, BigInt* r, const BigInt& a, const BigInt& b) {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  if (b.IsZero()) return DISP_E_DIVBYZERO;
  const bool q_negative = a.negative() != b.negative();
  const bool r_negative = a.negative();
  const BigMagnitude& am = a.magnitude();
  const BigMagnitude& bm = b.magnitude();
  const size_t an = LimbsForWords(am.used());
  const size_t bn = LimbsForWords(bm.used());
  const size_t qn = an < bn ? 0 : an - bn + 1;
  const size_t rn = an < bn ? an : bn;
  LimbScratch memory(an + bn + qn + rn);
  if (memory.get() == nullptr) return E_OUTOFMEMORY;
  Limb* const x = memory.get();
  Limb* const y = x + an;
  Limb* const quotient = y + bn;
  Limb* const remainder = quotient + qn;
  LimbsFromWords(x, am.digits(), am.used());
  LimbsFromWords(y, bm.digits(), bm.used());
  if (qn == 0) {
    CopyLimbs(remainder, x, rn);
  } else if (!DivideLimbs(q != nullptr ? quotient : nullptr, r != nullptr ? remainder : nullptr, x,
                          an, y, bn)) {
    return E_OUTOFMEMORY;
  }
  if (q != nullptr) {
    const HRESULT status = q->AssignLimbs(quotient, qn);
    if (FAILED(status)) return status;
    q->set_negative(q_negative);
  }
  if (r != nullptr) {
    const HRESULT status = r->AssignLimbs(remainder, rn);
    if (FAILED(status)) return status;
    r->set_negative(r_negative);
  }
  return S_OK;
}

using Operation = HRESULT (*)(BigInt&, const BigInt&, const BigInt&) noexcept;

BigInt Value(Operation operation, const BigInt& a, const BigInt& b) {
  BigInt result;
  const HRESULT status = operation(result, a, b);
  if (FAILED(status)) result = BigInt::Failed(status);
  return result;
}

}  // namespace

HRESULT Add(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  if (&r == &a) return r.add(b);
  BigInt sum(a);
  const HRESULT status = sum.add(b);
  if (SUCCEEDED(status)) r.Swap(sum);
  return status;
}

HRESULT Subtract(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  if (&r == &a) return r.subtract(b);
  BigInt difference(a);
  const HRESULT status = difference.subtract(b);
  if (SUCCEEDED(status)) r.Swap(difference);
  return status;
}

HRESULT Multiply(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  const bool negative = a.negative() != b.negative();
  const BigMagnitude& am = a.magnitude();
  const BigMagnitude& bm = b.magnitude();
  const size_t an = LimbsForWords(am.used());
  const size_t bn = LimbsForWords(bm.used());
  HRESULT status = S_OK;
  if (an == 0 || bn == 0) {
    status = r.AssignLimbs(nullptr, 0);
  } else {
    const bool square = &am == &bm;
    LimbScratch memory(2 * (an + bn) + MultiplyScratch(an, bn));
    if (memory.get() == nullptr) return E_OUTOFMEMORY;
    Limb* const x = memory.get();
    Limb* const y = square ? x : x + an;
    Limb* const product = x + an + bn;
    LimbsFromWords(x, am.digits(), am.used());
    if (!square) LimbsFromWords(y, bm.digits(), bm.used());
    MultiplyLimbs(product, x, an, y, bn, product + an + bn);
    status = r.AssignLimbs(product, an + bn);
  }
  if (SUCCEEDED(status)) r.set_negative(negative);
  return status;
}

HRESULT Divide(BigInt& q, const BigInt& a, const BigInt& b) noexcept {
  return DivideBoth(&q, nullptr, a, b);
}

HRESULT Remainder(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  return DivideBoth(nullptr, &r, a, b);
}

BigInt operator+(const BigInt& a, const BigInt& b) noexcept {
  return Value(Add, a, b);
}
BigInt operator-(const BigInt& a, const BigInt& b) noexcept {
  return Value(Subtract, a, b);
}
BigInt operator*(const BigInt& a, const BigInt& b) noexcept {
  return Value(Multiply, a, b);
}
BigInt operator/(const BigInt& a, const BigInt& b) noexcept {
  return Value(Divide, a, b);
}
BigInt operator%(const BigInt& a, const BigInt& b) noexcept {
  return Value(Remainder, a, b);
}

}  // namespace mirolta
