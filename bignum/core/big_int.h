// A signed number of any size.
#pragma once

#include "big_magnitude.h"
#include "limb.h"

namespace mirolta {

// BigInt is a store of words, shared between copies until one of them is written to, and a sign.
// The flag of the sign is kept as operations leave it: conversions do not touch it, and a zero may
// carry it without counting as negative.
//
// A number whose making failed for want of memory, or as a quotient by zero, holds zero and says so
// in Status(); every operation that takes it returns that status or passes it on. Operations that
// return a status leave their results unchanged when it is a failure.
class BigInt {
 public:
  BigInt() noexcept = default;  // zero
  explicit BigInt(uint32_t word) noexcept;
  BigInt(const BigInt& other) noexcept;
  BigInt(BigInt&& other) noexcept;
  BigInt& operator=(const BigInt& other) noexcept;
  BigInt& operator=(BigInt&& other) noexcept;
  ~BigInt();

  // S_OK, or why there is no value: E_OUTOFMEMORY or DISP_E_DIVBYZERO.
  HRESULT Status() const { return status_; }
  static BigInt Failed(HRESULT status) noexcept;

  // The sign's flag, and whether the number is below zero.
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

  // this += b and this -= b. b may be this number.
  HRESULT Add(const BigInt& b) noexcept;
  HRESULT Subtract(const BigInt& b) noexcept;

  // The store as this number's own, with room for words and all of them zero, or null if there is
  // no room; then the number is as before. After writing words, normalise it. The sign stays.
  BigMagnitude* Rewrite(uint32_t words) noexcept;
  // Makes the magnitude x[n]. The sign stays.
  HRESULT AssignLimbs(const Limb* x, size_t n) noexcept;
  // The same without a copy: the store as this number's own n limbs, all of which the caller writes
  // before EndLimbs, or null if there is no room; then the number is as before.
  Limb* BeginLimbs(size_t n) noexcept;
  void EndLimbs(Limb* limbs, size_t n) noexcept;

  void Swap(BigInt& other) noexcept;

 private:
  static const BigMagnitude kZero;

  // Makes the store this number's own before a change in place.
  HRESULT MakePrivate() noexcept;
  // The store as this number's own with room for words, its old value given up; null as above.
  BigMagnitude* Room(uint32_t words) noexcept;
  void Release() noexcept;

  BigMagnitude* magnitude_ = nullptr;  // null for zero without a store
  int32_t negative_ = 0;
  HRESULT status_ = S_OK;
};

// Compare returns -1, 0 or 1. A number below zero is less than one that is not; two numbers below
// zero compare by size, so that -5 is greater than -3.
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

// r := a + b, a - b, a * b; results may be operands.
HRESULT Add(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
HRESULT Subtract(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
HRESULT Multiply(BigInt& r, const BigInt& a, const BigInt& b) noexcept;
// Quotients are cut towards zero; the remainder has the flag of the dividend.
// Errors: DISP_E_DIVBYZERO for b = 0.
HRESULT Divide(BigInt& q, const BigInt& a, const BigInt& b) noexcept;
HRESULT Remainder(BigInt& r, const BigInt& a, const BigInt& b) noexcept;

// The same as values; failures are in the result's status().
BigInt operator+(const BigInt& a, const BigInt& b) noexcept;
BigInt operator-(const BigInt& a, const BigInt& b) noexcept;
BigInt operator*(const BigInt& a, const BigInt& b) noexcept;
BigInt operator/(const BigInt& a, const BigInt& b) noexcept;
BigInt operator%(const BigInt& a, const BigInt& b) noexcept;

// FirstFailure returns the first status of a and b that is a failure, or S_OK.
inline HRESULT FirstFailure(const BigInt& a, const BigInt& b) {
  return FAILED(a.Status()) ? a.Status() : b.Status();
}

}  // namespace mirolta
