#include "big_magnitude.h"

#include "limb_basics.h"
#include "divide.h"
#include "multiply.h"
#include "limb_scratch.h"

namespace mirolta {

BigMagnitude::~BigMagnitude() {
  WipeMemory(digits_, size_t{capacity_} * 4);
  delete[] digits_;
}

bool BigMagnitude::reserve(uint32_t n) noexcept {
  if (n <= capacity_) return true;
  uint32_t* const larger = n <= kMostWords ? NewArray<uint32_t>(CheckedSize(n)) : nullptr;
  if (larger == nullptr) return false;
  for (uint32_t i = 0; i < used_; ++i) larger[i] = digits_[i];
  WipeMemory(digits_, size_t{capacity_} * 4);
  delete[] digits_;
  digits_ = larger;
  capacity_ = n;
  // The tail is normalise's business once words have been written there.
  for (uint32_t i = used_; i < n; ++i) digits_[i] = 0;
  return true;
}

bool BigMagnitude::clearTo(uint32_t n) noexcept {
  if (!reserve(n)) return false;
  for (uint32_t i = 0; i < capacity_; ++i) digits_[i] = 0;
  used_ = 0;
  return true;
}

bool BigMagnitude::setWord(uint32_t i, uint32_t w) noexcept {
  if (i < used_) {
    digits_[i] = w;
    if (w == 0) dropZeroWords();
    return true;
  }
  if (w == 0) return true;
  if (i == UINT32_MAX || !reserve(i + 1)) return false;
  for (uint32_t j = used_; j < i; ++j) digits_[j] = 0;
  digits_[i] = w;
  used_ = i + 1;
  return true;
}

bool BigMagnitude::setSmall(uint32_t w) noexcept {
  if (w != 0 && !reserve(1)) return false;
  used_ = 0;
  return setWord(0, w);
}

bool BigMagnitude::copyFrom(const BigMagnitude& b) noexcept {
  if (&b == this) return true;
  if (!reserve(b.used_)) return false;
  for (uint32_t i = 0; i < b.used_; ++i) digits_[i] = b.digits_[i];
  used_ = b.used_;
  dropZeroWords();
  return true;
}

void BigMagnitude::normalise() noexcept {
  used_ = capacity_;
  dropZeroWords();
}

void BigMagnitude::dropZeroWords() noexcept {
  while (used_ != 0 && digits_[used_ - 1] == 0) --used_;
}

uint64_t BigMagnitude::bitLength() const noexcept {
  if (used_ == 0) return 0;
  const uint32_t top = digits_[used_ - 1];
  if (top == 0) return uint64_t{used_ - 1} * 32;
  return uint64_t{used_} * 32 - static_cast<uint32_t>(__builtin_clz(top));
}

bool BigMagnitude::testBit(uint64_t i) const noexcept {
  if (i >> 5 >= used_) return false;
  return (digits_[i >> 5] >> (i & 31) & 1) != 0;
}

int BigMagnitude::compare(const BigMagnitude& a, const BigMagnitude& b) noexcept {
  if (a.used_ != b.used_) return a.used_ < b.used_ ? -1 : 1;
  for (uint32_t i = a.used_; i-- != 0;) {
    if (a.digits_[i] != b.digits_[i]) return a.digits_[i] < b.digits_[i] ? -1 : 1;
  }
  return 0;
}

bool BigMagnitude::add(const BigMagnitude& b) noexcept {
  const uint32_t words = used_ > b.used_ ? used_ : b.used_;
  // Room for a new top word is asked for only where the top words may carry.
  const uint64_t top = words == 0 ? 0 : uint64_t{getWord(words - 1)} + b.getWord(words - 1);
  const uint32_t needed = top >= UINT32_MAX ? words + 1 : words;
  if (needed < words || !reserve(needed)) return false;
  // b may be this number, so its words are found only now.
  const uint32_t* const other = b.digits_;
  const uint32_t other_words = b.used_;
  const uint32_t common = used_ < other_words ? used_ : other_words;
  uint32_t i = 0;
  uint64_t carry = 0;
  for (; i < common; ++i) {
    carry += uint64_t{digits_[i]} + other[i];
    digits_[i] = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  for (; i < words; ++i) {
    carry += i < used_ ? digits_[i] : other[i];
    digits_[i] = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  if (carry != 0) digits_[words] = static_cast<uint32_t>(carry);
  used_ = carry != 0 ? words + 1 : words;
  return true;
}

void BigMagnitude::subtract(const BigMagnitude& b) noexcept {
  const uint32_t words = used_;
  const uint32_t common = words < b.used_ ? words : b.used_;
  uint32_t i = 0;
  uint64_t borrow = 0;  // 0 or 1
  for (; i < common; ++i) {
    const uint64_t t = uint64_t{digits_[i]} - b.digits_[i] - borrow;
    digits_[i] = static_cast<uint32_t>(t);
    borrow = t >> 63;
  }
  // A borrow that leaves the last word is lost.
  for (; i < words && borrow != 0; ++i) borrow = digits_[i]-- == 0 ? 1 : 0;
  dropZeroWords();
}

bool BigMagnitude::shiftLeft1() noexcept {
  if (used_ != 0 && digits_[used_ - 1] >> 31 != 0) {
    if (used_ == UINT32_MAX || !reserve(used_ + 1)) return false;
    digits_[used_++] = 0;
  }
  for (uint32_t i = used_; i-- != 0;) {
    digits_[i] = digits_[i] << 1 | (i != 0 ? digits_[i - 1] >> 31 : 0);
  }
  return true;
}

void BigMagnitude::shiftRight1() noexcept {
  shiftRight(1);
}

void BigMagnitude::shiftRight(uint64_t bits) noexcept {
  const uint64_t words = bits / 32;
  const uint32_t rest = bits % 32;
  for (uint32_t i = 0; i < used_; ++i) {
    const uint64_t from = i + words;
    const uint32_t low = from < used_ ? digits_[from] : 0;
    const uint32_t high = from + 1 < used_ ? digits_[from + 1] : 0;
    digits_[i] = rest == 0 ? low : low >> rest | high << (32 - rest);
  }
  dropZeroWords();
}

bool BigMagnitude::multiplyTrunc(BigMagnitude& r, const BigMagnitude& a, const BigMagnitude& b,
                                 uint64_t bits) noexcept {
  const uint64_t full = uint64_t{a.used_} + b.used_;
  uint64_t kept = bits / 32 + (bits % 32 != 0 ? 1 : 0);
  const bool cut = kept <= full;
  if (!cut) kept = full;
  if (kept > UINT32_MAX) return false;
  const uint32_t words = static_cast<uint32_t>(kept);
  if (a.used_ == 0 || b.used_ == 0 || words == 0) {
    r.used_ = 0;
    return true;
  }
  // Words of an operand at or above the cut cannot reach the result.
  const size_t an = LimbsForWords(a.used_ < words ? a.used_ : words);
  const size_t bn = LimbsForWords(b.used_ < words ? b.used_ : words);
  LimbScratch memory(2 * CheckedSize(an) + 2 * CheckedSize(bn) + MultiplyScratch(an, bn));
  if (memory.get() == nullptr || !r.reserve(words)) return false;
  Limb* const x = memory.get();
  Limb* const y = &a == &b ? x : x + an;
  Limb* const product = x + an + bn;
  LimbsFromWords(x, a.digits_, a.used_ < words ? a.used_ : words);
  if (x != y) LimbsFromWords(y, b.digits_, b.used_ < words ? b.used_ : words);
  MultiplyLimbs(product, x, an, y, bn, product + an + bn);
  size_t have = (an + bn) * kLimbWords;
  if (have > words) have = words;
  WordsFromLimbs(r.digits_, product, have);
  r.used_ = static_cast<uint32_t>(have);
  if (cut && have == words && bits % 32 != 0) {
    r.digits_[words - 1] &= (uint32_t{1} << (bits % 32)) - 1;
  }
  r.dropZeroWords();
  return true;
}

bool BigMagnitude::divide(BigMagnitude& q, const BigMagnitude& a, const BigMagnitude& b,
                          BigMagnitude& r) noexcept {
  const size_t bw = b.used_;
  if (bw == 0) return false;
  if (compare(a, b) < 0) {
    if (!r.copyFrom(a)) return false;
    q.used_ = 0;
    return true;
  }
  const size_t an = LimbsForWords(a.used_);
  const size_t bn = LimbsForWords(bw);
  const size_t qn = an - bn + 1;
  LimbScratch memory(CheckedSize(an) + 2 * CheckedSize(bn) + CheckedSize(qn));
  if (memory.get() == nullptr) return false;
  Limb* const x = memory.get();
  Limb* const y = x + an;
  Limb* const quotient = y + bn;
  Limb* const remainder = quotient + qn;
  LimbsFromWords(x, a.digits_, a.used_);
  LimbsFromWords(y, b.digits_, bw);
  const uint32_t q_words = static_cast<uint32_t>(a.used_ - bw + 1);
  if (!DivideLimbs(quotient, remainder, x, an, y, bn)) return false;
  if (!q.reserve(q_words) || !r.reserve(static_cast<uint32_t>(bw))) return false;
  WordsFromLimbs(q.digits_, quotient, q_words);
  q.used_ = q_words;
  q.dropZeroWords();
  WordsFromLimbs(r.digits_, remainder, bw);
  r.used_ = static_cast<uint32_t>(bw);
  r.dropZeroWords();
  return true;
}

}  // namespace mirolta
