// Number text in the English (United States) locale, which the runtime always uses.
#pragma once

#include "values/variant_decimal.h"

namespace mirolta::runtime {

struct NumberText {
  Digits digits;
  bool is_bits = false;  // "&HFF" or "&O17": a bit pattern, without sign
  ULONGLONG bits = 0;
};

// ParseNumberText reads a number with optional spaces, one sign before or after, parentheses for
// minus, "$", thousands separators, a decimal point and an exponent; or a hexadecimal or octal bit
// pattern.
// Errors: DISP_E_TYPEMISMATCH if it is no number; DISP_E_OVERFLOW for more than 64 bits.
HRESULT ParseNumberText(const OLECHAR* text, UINT length, NumberText* number);

// TextOfDigits formats a number without an exponent.
// Errors: null if memory is short.
BSTR TextOfDigits(const Digits& number);
// TextOfReal rounds to `significant` digits, halves away from zero as the platform does here. The
// result has an exponent ("1E+15") where it would otherwise need more digits or have four zeros
// after the point.
// Errors: null if memory is short.
BSTR TextOfReal(double value, int significant);

}  // namespace mirolta::runtime
