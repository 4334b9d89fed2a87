// Number text in the form of the English (United States) locale, which the runtime always uses.
#pragma once

#include "values/variant_decimal.h"

namespace mirolta::runtime {

struct NumberText {
  Digits digits;
  bool is_bits = false;  // "&HFF" or "&O17": a bit pattern, without sign
  ULONGLONG bits = 0;
};

// ParseNumberText reads text with optional spaces, one sign before or after, parentheses for minus,
// "$", thousands separators, a decimal point and an exponent; or hexadecimal and octal bit
// patterns. Errors: DISP_E_TYPEMISMATCH if it is no number, DISP_E_OVERFLOW for more than 64 bits.
HRESULT ParseNumberText(const OLECHAR* text, UINT length, NumberText* number);

// Both make number text. Errors: null if memory is short.
BSTR TextOfDigits(const Digits& number);
// TextOfReal rounds to `significant` digits, halves away from zero as the platform does here, and
// writes plain text, or "1E+15" where that would need more digits or four zeros after the point.
BSTR TextOfReal(double value, int significant);

}  // namespace mirolta::runtime
