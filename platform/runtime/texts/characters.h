// Properties of single 16-bit characters.
#pragma once

#include "mirolta/base_types.h"

namespace mirolta::runtime {

// LowerAscii returns the lower case of an ASCII letter, any other character as it is.
constexpr WCHAR LowerAscii(WCHAR c) {
  return c >= u'A' && c <= u'Z' ? static_cast<WCHAR>(c - u'A' + u'a') : c;
}

constexpr bool IsAsciiLetter(WCHAR c) {
  return LowerAscii(c) >= u'a' && LowerAscii(c) <= u'z';
}

constexpr bool IsDecimalDigit(WCHAR c) {
  return c >= u'0' && c <= u'9';
}

// HexDigitValue returns 0 to 15, or -1 for a character that is no hexadecimal digit.
constexpr int HexDigitValue(WCHAR c) {
  if (IsDecimalDigit(c)) return c - u'0';
  c = LowerAscii(c);
  return c >= u'a' && c <= u'f' ? c - u'a' + 10 : -1;
}

// IsSpaceCharacter says whether the platform skips the character as white space in numbers and
// dates.
// Source: Unicode, property White_Space.
bool IsSpaceCharacter(WCHAR c);

}  // namespace mirolta::runtime
