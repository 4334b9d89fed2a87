// Numbers as decimal and hexadecimal text.
#pragma once

#include "big_int.h"

namespace mirolta {

// NumberText owns the characters of a number; it wipes them.
class NumberText {
 public:
  NumberText() noexcept = default;
  ~NumberText();
  NumberText(const NumberText&) = delete;
  NumberText& operator=(const NumberText&) = delete;

  // The digits with a zero character behind them; null when there is no text.
  const OLECHAR* Characters() const { return characters_; }
  uint32_t Length() const { return length_; }

  // Room for length characters, at least one, and the zero behind them, to be written by the caller:
  // that of the text before where it is enough. Null if there is no memory, the text is then as
  // before.
  OLECHAR* Resize(uint32_t length) noexcept;
  void Clear() noexcept;

 private:
  OLECHAR* characters_ = nullptr;
  uint32_t length_ = 0;
  uint32_t capacity_ = 0;
};

// ToText writes the size of n, most significant digit first, lowercase, without sign, prefix or
// leading zeros. The text of zero is null.
// Errors: E_FAIL for a base other than 10 and 16, E_OUTOFMEMORY; text unchanged.
HRESULT ToText(NumberText& text, const BigInt& n, uint32_t base) noexcept;

// FromDecimalText makes n the number that the digits among the characters spell; all others are
// skipped. What exceeds ceil(length * 0.41524) bytes is dropped: only texts of 1,811 characters and
// more can lose anything. The sign's flag stays.
// Errors: E_OUTOFMEMORY, n unchanged.
HRESULT FromDecimalText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept;

// FromHexText does the same for hexadecimal digits of either case; nothing is dropped.
HRESULT FromHexText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept;

}  // namespace mirolta
