// Signed integers of any size.
#pragma once

#include "big_magnitude.h"
#include "limb.h"

namespace mirolta {

// BigInt is a magnitude, shared copy-on-write between copies, and a sign flag. Operations set the
// flag as they state, conversions keep it, and a zero may have it without being negative.
//
// A number that could not be computed, since memory ran out or the divisor was zero, is zero and
// has that failure as its Status(). Every operation on it returns the status or gives it to its
// result. Operations that return a failure leave their results unchanged.
class BigInt {
 public:
  BigInt() noexcept = default;  // zero
  explicit BigInt(uint32_t word) noexcept;
  BigInt(const BigInt& other) noexcept;
  BigInt(BigInt&& other) noexcept;
  BigInt& operator=(const BigInt& other) noexcept;
  BigInt& operator=(BigInt&& other) noexcept;
  ~BigInt();

  // S_OK, E_OUTOFMEMORY or DISP_E_DIVBYZERO.
  HRESULT Status() const { return status_; }
  static BigInt Failed(HRESULT status) noexcept;

  // SignFlag is the flag as stored; IsNegative is false for zero.
  bool SignFlag() const { return negative_ != 0; }
  void SetSignFlag(bool negative) { negative_ = negative ? 1 : 0; }
  bool IsNegative() const { return negative_ != 0 && !IsZero(); }
  bool IsZero() const { return magnitude_ == nullptr || magnitude_->IsZero(); }
  bool IsOdd() const { return (GetWord(0) & 1) != 0; }

  const BigMagnitude& Magnitude() const { return magnitude_ != nullptr ? *magnitude_ : kZero; }
  uint64_t BitLength() const { return Magnitude().BitLength(); }
  bool TestBit(uint64_t i) const { return Magnitude().TestBit(i); }
  uint32_t GetWord(uint32_t i) const { return Magnitude().GetWord(i); }
  uint32_t Used() const { return Magnitude().Used(); }

  // this += b and this -= b.
  // Alias:  b may be this number.
  // Errors: the status of either number; E_OUTOFMEMORY. This number is unchanged.
  HRESULT Add(const BigInt& b) noexcept;
  HRESULT Subtract(const BigInt& b) noexcept;

  // Rewrite returns the magnitude, unshared, with at least that capacity and all words zero. The
  // caller writes words, then calls Normalise. The sign flag is kept.
  // Errors: null if memory runs out; the number is unchanged.
  BigMagnitude* Rewrite(uint32_t words) noexcept;
  // AssignLimbs sets the magnitude to x[n]. The sign flag is kept.
  // Errors: E_OUTOFMEMORY; the number is unchanged.
  HRESULT AssignLimbs(const Limb* x, size_t n) noexcept;
  // BeginLimbs and EndLimbs do the same without a copy: the caller writes all of the n limbs that
  // BeginLimbs returns, then calls EndLimbs.
  // Errors: null if memory runs out; the number is unchanged.
  Limb* BeginLimbs(size_t n) noexcept;
  void EndLimbs(Limb* limbs, size_t n) noexcept;

  void Swap(BigInt& other) noexcept;

 private:
  static const BigMagnitude kZero;

  // Makes the magnitude unshared before a change in place.
  HRESULT MakePrivate() noexcept;
  // Returns the magnitude, unshared, with at least that capacity and an undefined value; null as
  // above.
  BigMagnitude* Room(uint32_t words) noexcept;
  void Release() noexcept;

  BigMagnitude* magnitude_ = nullptr;  // null: zero
  int32_t negative_ = 0;
  HRESULT status_ = S_OK;
};

// Compare returns -1, 0 or 1 as a <, = or > b. A negative number is less than any other; two
// negative numbers compare by magnitude, so that -5 > -3.
int Compare(const BigInt& a, const BigInt& b) noexcept;

inline bool operator==(const BigInt& a, const BigInt& b) {
  return Compare(a, b) == 0;
}
inline bool operator!=(const BigInt& a, const BigInt& b) {
  return Compare(a, b) != 0;
}
inline bool operator<(const BigInt& a, const BigInt& b) {
  return Compare(a, b) < 0;
}
inline bool operator>(const BigInt& a, const BigInt& b) {
  return Compare(a, b) > 0;
}
inline bool operator>=(const BigInt& a, const BigInt& b) {
  return Compare(a, b) >= 0;
}

// r := a + b, a - b, a * b.
// Alias:  r may be an operand.
// Errors: the status of an operand; E_OUTOFMEMORY. r is unchanged.
HRESULT Add(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
HRESULT Subtract(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
HRESULT Multiply(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
// q := a / b, truncated towards zero; r := a mod b, with the sign flag of a.
// Alias:  q and r may be operands.
// Errors: DISP_E_DIVBYZERO for b = 0; the status of an operand; E_OUTOFMEMORY. q and r are
//         unchanged.
HRESULT Divide(BigInt& q, const BigInt& a, const BigInt& b) noexcept;
HRESULT Remainder(BigInt& r, const BigInt& a, const BigInt& b) noexcept;

// The same as values, with the failure in the result's Status().
BigInt operator+(const BigInt& a, const BigInt& b) noexcept;
BigInt operator-(const BigInt& a, const BigInt& b) noexcept;
BigInt operator*(const BigInt& a, const BigInt& b) noexcept;
BigInt operator/(const BigInt& a, const BigInt& b) noexcept;
BigInt operator%(const BigInt& a, const BigInt& b) noexcept;

// FirstFailure returns the status of a if it is a failure, else that of b.
inline HRESULT FirstFailure(const BigInt& a, const BigInt& b) {
  return FAILED(a.Status()) ? a.Status() : b.Status();
}

}  // namespace mirolta
