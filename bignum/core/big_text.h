// Conversion between numbers and decimal or hexadecimal text.
#pragma once

#include "big_int.h"

namespace mirolta {

// NumberText owns the characters of a number and wipes them before they are freed.
class NumberText {
 public:
  NumberText() noexcept = default;
  ~NumberText();
  NumberText(const NumberText&) = delete;
  NumberText& operator=(const NumberText&) = delete;

  // The digits and a terminating zero; null if there is no text.
  const OLECHAR* Characters() const { return characters_; }
  uint32_t Length() const { return length_; }

  // Resize returns the characters for the caller to write, length >= 1, and terminates them. It
  // reuses the memory of the old text if that is enough.
  // Errors: null if memory runs out; the text is unchanged.
  OLECHAR* Resize(uint32_t length) noexcept;
  void Clear() noexcept;

 private:
  OLECHAR* characters_ = nullptr;
  uint32_t length_ = 0;
  uint32_t capacity_ = 0;
};

// ToText writes the magnitude of n, most significant digit first, in lower case, without sign,
// prefix or leading zeros. The text of zero is null.
// Errors: E_FAIL for a base other than 10 and 16; the status of n; E_OUTOFMEMORY. text is
//         unchanged.
HRESULT ToText(NumberText& text, const BigInt& n, uint32_t base) noexcept;

// FromDecimalText sets the magnitude of n to the decimal digits among the characters; it skips all
// other characters. The value is truncated to ceil(length * 0.41524) bytes, which only texts of
// 1,811 characters and more can exceed. The sign flag is kept.
// Errors: E_OUTOFMEMORY; n is unchanged.
HRESULT FromDecimalText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept;

// FromHexText does the same for hexadecimal digits of either case, without truncation.
HRESULT FromHexText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept;

}  // namespace mirolta
