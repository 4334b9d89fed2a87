// Unsigned magnitudes of 32-bit words.
#pragma once

#include <atomic>

#include "platform.h"

namespace mirolta {

// BigMagnitude is an unsigned magnitude, least significant word first. After every operation the
// highest used word is not zero; zero has none. Words above Used() are never read. Operations that
// allocate return false if memory runs out, with nothing changed. Words are wiped before they are
// freed.
class BigMagnitude {
 public:
  // The bits of this many words are counted by a size_t.
  static constexpr size_t kMostWords = sizeof(size_t) > 4 ? UINT32_MAX : SIZE_MAX / 32;

  BigMagnitude() noexcept = default;
  ~BigMagnitude();
  BigMagnitude(const BigMagnitude&) = delete;
  BigMagnitude& operator=(const BigMagnitude&) = delete;

  const uint32_t* Words() const { return words_; }
  uint32_t* Words() { return words_; }  // to write up to Capacity() words, before Normalise
  uint32_t Capacity() const { return capacity_; }
  uint32_t Used() const { return used_; }
  // The owners beside the first. Atomic, since copies of a number may be used by different threads.
  std::atomic<uint32_t> share_count{0};

  // Grows the capacity to n words, at most kMostWords, if it is less; never shrinks it.
  bool Reserve(uint32_t n) noexcept;
  // Reserve(n), then sets all words, and the value, to zero.
  bool ClearTo(uint32_t n) noexcept;
  // Sets word i to w. A zero at or above Used() does nothing.
  bool SetWord(uint32_t i, uint32_t w) noexcept;
  // Word i, 0 at or above Used().
  uint32_t GetWord(uint32_t i) const { return i < used_ ? words_[i] : 0; }
  bool SetSmall(uint32_t w) noexcept;
  bool CopyFrom(const BigMagnitude& b) noexcept;
  // Recounts Used() from Capacity() downwards, after words were written to Words().
  void Normalise() noexcept;

  uint64_t BitLength() const noexcept;
  bool TestBit(uint64_t i) const noexcept;
  // True also if all used words are zero.
  bool IsZero() const {
    uint32_t i = used_;
    while (i != 0 && words_[i - 1] == 0) --i;
    return i == 0;
  }
  // -1, 0 or 1 as a <, = or > b.
  static int Compare(const BigMagnitude& a, const BigMagnitude& b) noexcept;

  // this += b.
  // Alias:  b may be this.
  bool Add(const BigMagnitude& b) noexcept;
  // this := this - b mod 2^(32 * Used()): a larger b wraps within this number's words.
  // Alias:  b may be this.
  void Subtract(const BigMagnitude& b) noexcept;
  bool ShiftLeft1() noexcept;
  void ShiftRight1() noexcept;
  void ShiftRight(uint64_t bits) noexcept;

  // r := a * b mod 2^bits.
  // Alias:  r is neither a nor b; a may be b.
  static bool MultiplyTrunc(BigMagnitude& r, const BigMagnitude& a, const BigMagnitude& b,
                            uint64_t bits) noexcept;
  // q := a / b, r := a mod b.
  // Alias:  q is not r; each may be a or b.
  // Errors: false, with nothing changed, if memory runs out or b = 0.
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
