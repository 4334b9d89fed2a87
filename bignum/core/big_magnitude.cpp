#include "big_magnitude.h"

#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"

namespace mirolta {

BigMagnitude::~BigMagnitude() {
  WipeMemory(words_, size_t{capacity_} * 4);
  delete[] words_;
}

bool BigMagnitude::Reserve(uint32_t n) noexcept {
  if (n <= capacity_) return true;
  uint32_t* const larger = n <= kMostWords ? NewArray<uint32_t>(CheckedSize(n)) : nullptr;
  if (larger == nullptr) return false;
  for (uint32_t i = 0; i < used_; ++i) larger[i] = words_[i];
  WipeMemory(words_, size_t{capacity_} * 4);
  delete[] words_;
  words_ = larger;
  capacity_ = n;
  // Normalise reads the words above used_.
  for (uint32_t i = used_; i < n; ++i) words_[i] = 0;
  return true;
}

bool BigMagnitude::ClearTo(uint32_t n) noexcept {
  if (!Reserve(n)) return false;
  for (uint32_t i = 0; i < capacity_; ++i) words_[i] = 0;
  used_ = 0;
  return true;
}

bool BigMagnitude::SetWord(uint32_t i, uint32_t w) noexcept {
  if (i < used_) {
    words_[i] = w;
    if (w == 0) DropZeroWords();
    return true;
  }
  if (w == 0) return true;
  if (i == UINT32_MAX || !Reserve(i + 1)) return false;
  for (uint32_t j = used_; j < i; ++j) words_[j] = 0;
  words_[i] = w;
  used_ = i + 1;
  return true;
}

bool BigMagnitude::SetSmall(uint32_t w) noexcept {
  if (w != 0 && !Reserve(1)) return false;
  used_ = 0;
  return SetWord(0, w);
}

bool BigMagnitude::CopyFrom(const BigMagnitude& b) noexcept {
  if (&b == this) return true;
  if (!Reserve(b.used_)) return false;
  for (uint32_t i = 0; i < b.used_; ++i) words_[i] = b.words_[i];
  used_ = b.used_;
  DropZeroWords();
  return true;
}

void BigMagnitude::Normalise() noexcept {
  used_ = capacity_;
  DropZeroWords();
}

void BigMagnitude::DropZeroWords() noexcept {
  while (used_ != 0 && words_[used_ - 1] == 0) --used_;
}

uint64_t BigMagnitude::BitLength() const noexcept {
  if (used_ == 0) return 0;
  const uint32_t top = words_[used_ - 1];
  if (top == 0) return uint64_t{used_ - 1} * 32;
  return uint64_t{used_} * 32 - static_cast<uint32_t>(__builtin_clz(top));
}

bool BigMagnitude::TestBit(uint64_t i) const noexcept {
  if (i >> 5 >= used_) return false;
  return (words_[i >> 5] >> (i & 31) & 1) != 0;
}

int BigMagnitude::Compare(const BigMagnitude& a, const BigMagnitude& b) noexcept {
  if (a.used_ != b.used_) return a.used_ < b.used_ ? -1 : 1;
  for (uint32_t i = a.used_; i-- != 0;) {
    if (a.words_[i] != b.words_[i]) return a.words_[i] < b.words_[i] ? -1 : 1;
  }
  return 0;
}

bool BigMagnitude::Add(const BigMagnitude& b) noexcept {
  const uint32_t words = used_ > b.used_ ? used_ : b.used_;
  // A new top word is reserved only if the top words may carry.
  const uint64_t top = words == 0 ? 0 : uint64_t{GetWord(words - 1)} + b.GetWord(words - 1);
  const uint32_t needed = top >= UINT32_MAX ? words + 1 : words;
  if (needed < words || !Reserve(needed)) return false;
  // Read after Reserve, since b may be this number.
  const uint32_t* const other = b.words_;
  const uint32_t other_words = b.used_;
  const uint32_t common = used_ < other_words ? used_ : other_words;
  uint32_t i = 0;
  uint64_t carry = 0;
  for (; i < common; ++i) {
    carry += uint64_t{words_[i]} + other[i];
    words_[i] = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  for (; i < words; ++i) {
    carry += i < used_ ? words_[i] : other[i];
    words_[i] = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  if (carry != 0) words_[words] = static_cast<uint32_t>(carry);
  used_ = carry != 0 ? words + 1 : words;
  return true;
}

void BigMagnitude::Subtract(const BigMagnitude& b) noexcept {
  const uint32_t words = used_;
  const uint32_t common = words < b.used_ ? words : b.used_;
  uint32_t i = 0;
  uint64_t borrow = 0;  // 0 or 1
  for (; i < common; ++i) {
    const uint64_t t = uint64_t{words_[i]} - b.words_[i] - borrow;
    words_[i] = static_cast<uint32_t>(t);
    borrow = t >> 63;
  }
  // A borrow out of the last word is dropped.
  for (; i < words && borrow != 0; ++i) borrow = words_[i]-- == 0 ? 1 : 0;
  DropZeroWords();
}

bool BigMagnitude::ShiftLeft1() noexcept {
  if (used_ != 0 && words_[used_ - 1] >> 31 != 0) {
    if (used_ == UINT32_MAX || !Reserve(used_ + 1)) return false;
    words_[used_++] = 0;
  }
  for (uint32_t i = used_; i-- != 0;) {
    words_[i] = words_[i] << 1 | (i != 0 ? words_[i - 1] >> 31 : 0);
  }
  return true;
}

void BigMagnitude::ShiftRight1() noexcept {
  ShiftRight(1);
}

void BigMagnitude::ShiftRight(uint64_t bits) noexcept {
  const uint64_t words = bits / 32;
  const uint32_t rest = bits % 32;
  for (uint32_t i = 0; i < used_; ++i) {
    const uint64_t from = i + words;
    const uint32_t low = from < used_ ? words_[from] : 0;
    const uint32_t high = from + 1 < used_ ? words_[from + 1] : 0;
    words_[i] = rest == 0 ? low : low >> rest | high << (32 - rest);
  }
  DropZeroWords();
}

bool BigMagnitude::MultiplyTrunc(BigMagnitude& r, const BigMagnitude& a, const BigMagnitude& b,
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
  // Operand words at or above the truncation cannot affect the result.
  const size_t an = LimbsForWords(a.used_ < words ? a.used_ : words);
  const size_t bn = LimbsForWords(b.used_ < words ? b.used_ : words);
  LimbScratch memory(2 * CheckedSize(an) + 2 * CheckedSize(bn) + MultiplyScratch(an, bn));
  if (memory.Get() == nullptr || !r.Reserve(words)) return false;
  Limb* const x = memory.Get();
  Limb* const y = &a == &b ? x : x + an;
  Limb* const product = x + an + bn;
  LimbsFromWords(x, a.words_, a.used_ < words ? a.used_ : words);
  if (x != y) LimbsFromWords(y, b.words_, b.used_ < words ? b.used_ : words);
  MultiplyLimbs(product, x, an, y, bn, product + an + bn);
  size_t have = (an + bn) * kLimbWords;
  if (have > words) have = words;
  WordsFromLimbs(r.words_, product, have);
  r.used_ = static_cast<uint32_t>(have);
  if (cut && have == words && bits % 32 != 0) {
    r.words_[words - 1] &= (uint32_t{1} << (bits % 32)) - 1;
  }
  r.DropZeroWords();
  return true;
}

bool BigMagnitude::Divide(BigMagnitude& q, const BigMagnitude& a, const BigMagnitude& b,
                          BigMagnitude& r) noexcept {
  const size_t bw = b.used_;
  if (bw == 0) return false;
  if (Compare(a, b) < 0) {
    if (!r.CopyFrom(a)) return false;
    q.used_ = 0;
    return true;
  }
  const size_t an = LimbsForWords(a.used_);
  const size_t bn = LimbsForWords(bw);
  const size_t qn = an - bn + 1;
  LimbScratch memory(CheckedSize(an) + 2 * CheckedSize(bn) + CheckedSize(qn));
  if (memory.Get() == nullptr) return false;
  Limb* const x = memory.Get();
  Limb* const y = x + an;
  Limb* const quotient = y + bn;
  Limb* const remainder = quotient + qn;
  LimbsFromWords(x, a.words_, a.used_);
  LimbsFromWords(y, b.words_, bw);
  const uint32_t q_words = static_cast<uint32_t>(a.used_ - bw + 1);
  if (!DivideLimbs(quotient, remainder, x, an, y, bn)) return false;
  if (!q.Reserve(q_words) || !r.Reserve(static_cast<uint32_t>(bw))) return false;
  WordsFromLimbs(q.words_, quotient, q_words);
  q.used_ = q_words;
  q.DropZeroWords();
  WordsFromLimbs(r.words_, remainder, bw);
  r.used_ = static_cast<uint32_t>(bw);
  r.DropZeroWords();
  return true;
}

}  // namespace mirolta
