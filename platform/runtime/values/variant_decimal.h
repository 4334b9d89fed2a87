// Numbers as decimal digits: what integers, currency, DECIMAL and number text are exactly. Every
// conversion between these goes through digits, so rounding and range are decided in one place.
#pragma once

#include "portable/variant.h"

namespace mirolta::runtime {

// The value is digits * 10^exponent, read as an integer; no digits are zero. No leading zeros.
struct Digits {
  static constexpr int kCapacity = 64;
  BYTE digits[kCapacity];
  int count = 0;
  int exponent = 0;
  bool negative = false;
  bool more = false;  // nonzero digits beyond the capacity were cut off

  // Append adds a digit at the right; one that finds no room scales the value instead.
  void Append(BYTE digit);
  // StripTrailingZeros scales instead; zero has exponent 0.
  void StripTrailingZeros();
  bool IsZero() const { return count == 0; }
};

Digits DigitsOfInteger(bool negative, ULONGLONG magnitude);
Digits DigitsOfCurrency(CY value);
Digits DigitsOfDecimal(const DECIMAL& value);
// DigitsOfReal rounds to `significant` decimal digits, at most 48. `value` is finite.
Digits DigitsOfReal(double value, int significant);

// DecimalOfCurrency keeps all four decimal places, zeros too.
DECIMAL DecimalOfCurrency(CY value);

enum class Halves : uint8_t { kToEven, kAwayFromZero };

// RoundDigits keeps the first `keep` digits (0 or less: none).
void RoundDigits(Digits* number, int keep, Halves halves = Halves::kToEven);

// The conversions round halves to even. Errors: false when the result is out of range.
[[nodiscard]] bool DigitsToInteger(Digits number, ULONGLONG* magnitude);
[[nodiscard]] bool DigitsToCurrency(Digits number, CY* value);
[[nodiscard]] bool DigitsToDecimal(const Digits& number, DECIMAL* value);
[[nodiscard]] bool DigitsToReal(const Digits& number, double* value);

// DigitsToText writes plain decimal text without exponent or trailing zeros and returns its length.
// Shapes: text[kPlainTextCapacity]; for |exponent| <= 28 and count <= 29.
constexpr int kPlainTextCapacity = 64;
UINT DigitsToText(const Digits& number, OLECHAR* text);

}  // namespace mirolta::runtime
