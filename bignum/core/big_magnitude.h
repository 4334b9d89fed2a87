// The store of a number's size: 32-bit words and the operations on them in place.
#pragma once

#include <atomic>

#include "platform.h"

namespace mirolta {

// BigMagnitude is an unsigned number, least significant word first. After every operation the word
// below used is not zero, or used is 0 for the value zero; what stands above used is never read.
// Operations that need room report whether they had it: after false nothing has changed. Words
// given back to the heap are wiped.
class BigMagnitude {
 public:
  // So many words have fewer bits than a size_t counts.
  static constexpr size_t kMostWords = sizeof(size_t) > 4 ? UINT32_MAX : SIZE_MAX / 32;

  BigMagnitude() noexcept = default;
  ~BigMagnitude();
  BigMagnitude(const BigMagnitude&) = delete;
  BigMagnitude& operator=(const BigMagnitude&) = delete;

  const uint32_t* Words() const { return words_; }
  uint32_t* Words() { return words_; }  // for writing words up to capacity, before Normalise
  uint32_t Capacity() const { return capacity_; }
  uint32_t Used() const { return used_; }
  // How many numbers beside the first refer to this store. Copies of a number may be used by
  // different threads, so the count changes atomically.
  std::atomic<uint32_t> share_count{0};

  // Grows the capacity to n words, at most kMostWords, if it is smaller; never shrinks it.
  bool Reserve(uint32_t n) noexcept;
  // Reserve(n), then zeroes all words and the value.
  bool ClearTo(uint32_t n) noexcept;
  // Makes w the word i. Zero at or above used does nothing.
  bool SetWord(uint32_t i, uint32_t w) noexcept;
  // Word i, 0 above the significant ones.
  uint32_t GetWord(uint32_t i) const { return i < used_ ? words_[i] : 0; }
  bool SetSmall(uint32_t w) noexcept;
  bool CopyFrom(const BigMagnitude& b) noexcept;
  // Recounts used from capacity downwards, after words were written to Words().
  void Normalise() noexcept;

  uint64_t BitLength() const noexcept;
  bool TestBit(uint64_t i) const noexcept;
  // True also when words are counted as used but all zero.
  bool IsZero() const {
    uint32_t i = used_;
    while (i != 0 && words_[i - 1] == 0) --i;
    return i == 0;
  }
  // -1, 0 or 1.
  static int Compare(const BigMagnitude& a, const BigMagnitude& b) noexcept;

  // this += b. b may be this.
  bool Add(const BigMagnitude& b) noexcept;
  // this -= b modulo 2^(32 * used): a larger b wraps within this number's words. b may be this.
  void Subtract(const BigMagnitude& b) noexcept;
  bool ShiftLeft1() noexcept;
  void ShiftRight1() noexcept;
  void ShiftRight(uint64_t bits) noexcept;

  // r := a * b mod 2^bits. r is neither a nor b; a may be b.
  static bool MultiplyTrunc(BigMagnitude& r, const BigMagnitude& a, const BigMagnitude& b,
                            uint64_t bits) noexcept;
  // q := a / b, r := a mod b. q and r are two stores, each may also be a or b.
  // Errors: false, with nothing changed, also for b = 0.
  static bool Divide(BigMagnitude& q, const BigMagnitude& a, const BigMagnitude& b,
                     BigMagnitude& r) noexcept;

 private:
  friend class BigInt;
  void DropZeroWords() noexcept;

  uint32_t* words_ = nullptr;
  uint32_t capacity_ = 0;
  uint32_t used_ = 0;
};

}  // namespace mirolta
