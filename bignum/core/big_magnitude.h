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

  const uint32_t* digits() const { return digits_; }
  uint32_t* digits() { return digits_; }  // for writing words up to capacity, before normalise
  uint32_t capacity() const { return capacity_; }
  uint32_t used() const { return used_; }
  // How many numbers beside the first refer to this store. Copies of a number may be used by
  // different threads, so the count changes atomically.
  std::atomic<uint32_t> shareCount{0};

  // Grows the capacity to n words, at most kMostWords, if it is smaller; never shrinks it.
  bool reserve(uint32_t n) noexcept;
  // reserve(n), then zeroes all words and the value.
  bool clearTo(uint32_t n) noexcept;
  // Makes w the word i. Zero at or above used does nothing.
  bool setWord(uint32_t i, uint32_t w) noexcept;
  // Word i, 0 above the significant ones.
  uint32_t getWord(uint32_t i) const { return i < used_ ? digits_[i] : 0; }
  bool setSmall(uint32_t w) noexcept;
  bool copyFrom(const BigMagnitude& b) noexcept;
  // Recounts used from capacity downwards, after words were written to digits().
  void normalise() noexcept;

  uint64_t bitLength() const noexcept;
  bool testBit(uint64_t i) const noexcept;
  // True also when words are counted as used but all zero.
  bool isZero() const {
    uint32_t i = used_;
    while (i != 0 && digits_[i - 1] == 0) --i;
    return i == 0;
  }
  // -1, 0 or 1.
  static int compare(const BigMagnitude& a, const BigMagnitude& b) noexcept;

  // this += b. b may be this.
  bool add(const BigMagnitude& b) noexcept;
  // this -= b modulo 2^(32 * used): a larger b wraps within this number's words. b may be this.
  void subtract(const BigMagnitude& b) noexcept;
  bool shiftLeft1() noexcept;
  void shiftRight1() noexcept;
  void shiftRight(uint64_t bits) noexcept;

  // r := a * b mod 2^bits. r is neither a nor b; a may be b.
  static bool multiplyTrunc(BigMagnitude& r, const BigMagnitude& a, const BigMagnitude& b,
                            uint64_t bits) noexcept;
  // q := a / b, r := a mod b. q and r are two stores, each may also be a or b.
  // Errors: false, with nothing changed, also for b = 0.
  static bool divide(BigMagnitude& q, const BigMagnitude& a, const BigMagnitude& b,
                     BigMagnitude& r) noexcept;

 private:
  friend class BigInt;
  void dropZeroWords() noexcept;

  uint32_t* digits_ = nullptr;
  uint32_t capacity_ = 0;
  uint32_t used_ = 0;
};

}  // namespace mirolta
