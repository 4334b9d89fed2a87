// Numbers as decimal digits, which represent integers, currency, DECIMAL and number text exactly.
// All conversions between these use digits, so that rounding and range are decided in one place.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

// The value is digits * 10^exponent, with `digits` read as an integer without leading zeros; no
// digits are zero.
struct Digits {
  static constexpr int kCapacity = 64;
  BYTE digits[kCapacity];
  int count = 0;
  int exponent = 0;
  bool negative = false;
  bool more = false;  // nonzero digits beyond the capacity were cut off

  // Append adds a digit at the right; beyond the capacity it scales the value instead.
  void Append(BYTE digit);
  // StripTrailingZeros moves trailing zeros to the exponent; zero has exponent 0.
  void StripTrailingZeros();
  bool IsZero() const { return count == 0; }
};

// A caller's DECIMAL may have more, which is no number.
inline constexpr int kMaxDecimalScale = 28;

Digits DigitsOfInteger(bool negative, ULONGLONG magnitude);
Digits DigitsOfCurrency(CY value);
// Shapes: scale <= kMaxDecimalScale.
Digits DigitsOfDecimal(const DECIMAL& value);
// DigitsOfReal rounds to `significant` decimal digits.
// Shapes: `value` is finite; significant <= 48.
// Source: correctly rounded, by std::to_chars.
Digits DigitsOfReal(double value, int significant);

// DecimalOfCurrency keeps all four decimal places, also zeros.
DECIMAL DecimalOfCurrency(CY value);

enum class Halves : uint8_t { kToEven, kAwayFromZero };

// RoundDigits rounds to the first `keep` digits; 0 or less leaves none.
void RoundDigits(Digits* number, int keep, Halves halves = Halves::kToEven);

// These round halves to even; DigitsToReal is correctly rounded.
// Errors: false if the result is out of range.
// Source: strtod in round-to-nearest mode (IEEE 754, 5.12.2).
[[nodiscard]] bool DigitsToInteger(Digits number, ULONGLONG* magnitude);
[[nodiscard]] bool DigitsToCurrency(Digits number, CY* value);
[[nodiscard]] bool DigitsToDecimal(const Digits& number, DECIMAL* value);
[[nodiscard]] bool DigitsToReal(const Digits& number, double* value);

// DigitsToText writes decimal text without an exponent or trailing zeros and returns its length.
// Shapes: text[kPlainTextCapacity]; |exponent| <= 28 and count <= 29.
constexpr int kPlainTextCapacity = 64;
UINT DigitsToText(const Digits& number, OLECHAR* text);

}  // namespace mirolta::runtime
