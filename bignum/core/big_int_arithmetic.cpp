#include <type_traits>

#include "big_int.h"
#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"

namespace mirolta {

namespace {

// Quotient, remainder or both by one division; either may be null.
HRESULT DivideBoth(BigInt* q, BigInt* r, const BigInt& a, const BigInt& b) {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  if (b.IsZero()) return DISP_E_DIVBYZERO;
  const bool q_negative = a.SignFlag() != b.SignFlag();
  const bool r_negative = a.SignFlag();
  const BigMagnitude& am = a.Magnitude();
  const BigMagnitude& bm = b.Magnitude();
  const size_t an = LimbsForWords(am.Used());
  const size_t bn = LimbsForWords(bm.Used());
  const size_t qn = an < bn ? 0 : an - bn + 1;
  CheckedSize limbs = CheckedSize(an) + 1 + CheckedSize(bn) + CheckedSize(qn);
  if (qn != 0) limbs = limbs + DivideScratch(an, bn);
  LimbScratch memory(limbs);
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* const x = memory.Get();
  Limb* const y = x + an + 1;
  Limb* const quotient = y + bn;
  bool divided = qn == 0;
  LimbsFromWords(x, am.Words(), am.Used());
  LimbsFromWords(y, bm.Words(), bm.Used());
  if (!divided && r == nullptr) {
    divided = QuotientInPlace(quotient, x, an, y, bn, quotient + qn);
    if (!divided) {
      LimbsFromWords(x, am.Words(), am.Used());
      LimbsFromWords(y, bm.Words(), bm.Used());
    }
  }
  if (!divided) DivideInPlace(quotient, x, an, y, bn, quotient + qn);
  if (q != nullptr) {
    const HRESULT status = q->AssignLimbs(quotient, qn);
    if (FAILED(status)) return status;
    q->SetSignFlag(q_negative);
  }
  if (r != nullptr) {
    const HRESULT status = r->AssignLimbs(x, qn != 0 ? bn : an);
    if (FAILED(status)) return status;
    r->SetSignFlag(r_negative);
  }
  return S_OK;
}

// Operands of up to this many limbs are multiplied without scratch.
constexpr size_t kShortLimbs = 8;
constexpr size_t kShortWords = kShortLimbs * kLimbWords;

// The limbs of a where they are, if limbs are words; else null.
template <typename AnyLimb>
const AnyLimb* LimbsInPlace(const BigMagnitude& a) {
  if constexpr (std::is_same_v<AnyLimb, uint32_t>) {
    return a.Words();
  } else {
    return nullptr;
  }
}

// Whether a product must copy its operands: r may be one of them, or share its words.
bool CopiesOperands(const BigInt& r, const BigMagnitude& a, const BigMagnitude& b) {
  return LimbsInPlace<Limb>(a) == nullptr || &r.Magnitude() == &a || &r.Magnitude() == &b;
}

// r := a * b, kShortWords >= a_words >= b_words >= 1. Multiply calls it in one place, so that
// compilers inline it and know the bounds of the copies.
HRESULT MultiplyShort(BigInt& r, const BigMagnitude& a, size_t a_words, const BigMagnitude& b,
                      size_t b_words) {
  const size_t m = LimbsForWords(a_words);
  const size_t n = LimbsForWords(b_words);
  Limb operands[2 * kShortLimbs];
  const Limb* x = LimbsInPlace<Limb>(a);
  const Limb* y = LimbsInPlace<Limb>(b);
  const bool copies = CopiesOperands(r, a, b);
  if (copies) {
    LimbsFromWords(operands, a.Words(), a_words);
    LimbsFromWords(operands + m, b.Words(), b_words);
    x = operands;
    y = operands + m;
  }
  Limb* const product = r.BeginLimbs(m + n);
  if (product != nullptr) {
    CurrentLimbKernels().multiply(product, x, m, y, n);
    r.EndLimbs(product, m + n);
  }
  if (copies) {
    WipePiece<kShortLimbs * sizeof(Limb)>(operands);
    if (m + n > kShortLimbs) WipePiece<kShortLimbs * sizeof(Limb)>(operands + kShortLimbs);
  }
  return product != nullptr ? S_OK : E_OUTOFMEMORY;
}

// r := a * b, m >= 1, n >= 1. Not inlined, so that short products do not pay for its stack frame.
__attribute__((noinline)) HRESULT MultiplyLong(BigInt& r, const BigMagnitude& a, size_t m,
                                               const BigMagnitude& b, size_t n) {
  const bool copies = CopiesOperands(r, a, b);
  CheckedSize limbs = MultiplyScratch(m, n);
  if (copies) limbs = limbs + CheckedSize(m) + CheckedSize(n);
  LimbScratch memory(limbs);
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* scratch = memory.Get();
  const Limb* x = LimbsInPlace<Limb>(a);
  const Limb* y = LimbsInPlace<Limb>(b);
  if (copies) {
    LimbsFromWords(scratch, a.Words(), a.Used());
    x = scratch;
    y = x;
    scratch += m;
    if (&a != &b) {
      LimbsFromWords(scratch, b.Words(), b.Used());
      y = scratch;
      scratch += n;
    }
  }
  Limb* const product = r.BeginLimbs(m + n);
  if (product == nullptr) return E_OUTOFMEMORY;
  MultiplyLimbs(product, x, m, y, n, scratch);
  r.EndLimbs(product, m + n);
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
  if (&r == &a) return r.Add(b);
  BigInt sum(a);
  const HRESULT status = sum.Add(b);
  if (SUCCEEDED(status)) r.Swap(sum);
  return status;
}

HRESULT Subtract(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  if (&r == &a) return r.Subtract(b);
  BigInt difference(a);
  const HRESULT status = difference.Subtract(b);
  if (SUCCEEDED(status)) r.Swap(difference);
  return status;
}

HRESULT Multiply(BigInt& r, const BigInt& a, const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(a, b);
  if (FAILED(failure)) return failure;
  const bool negative = a.SignFlag() != b.SignFlag();
  const BigMagnitude& am = a.Magnitude();
  const BigMagnitude& bm = b.Magnitude();
  const bool swapped = am.Used() < bm.Used();
  const BigMagnitude& longer = swapped ? bm : am;
  const BigMagnitude& shorter = swapped ? am : bm;
  const size_t long_words = longer.Used();
  const size_t short_words = shorter.Used();
  HRESULT status;
  if (short_words == 0) {
    status = r.AssignLimbs(nullptr, 0);
  } else if (long_words > kShortWords) {
    status =
        MultiplyLong(r, longer, LimbsForWords(long_words), shorter, LimbsForWords(short_words));
  } else {
    status = MultiplyShort(r, longer, long_words, shorter, short_words);
  }
  if (SUCCEEDED(status)) r.SetSignFlag(negative);
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
