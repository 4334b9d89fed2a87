#include "values/variant_number_text.h"

#include <cmath>
#include <cstdlib>

#include "texts/characters.h"

namespace mirolta::runtime {
namespace {

int DigitValue(OLECHAR c, int base) {
  const int value = HexDigitValue(c);
  return value < base ? value : -1;
}

// Reader parses in one pass. Past the end it reads zeros.
class Reader {
 public:
  Reader(const OLECHAR* text, UINT length) : at_(text), end_(text + length) {}

  HRESULT Read(NumberText* number) {
    if (!ReadBefore()) return DISP_E_TYPEMISMATCH;
    if (Peek() == u'&' && !currency_before_) {
      const HRESULT status = ReadBits(number);
      if (FAILED(status)) return status;
    } else if (!ReadDigits(&number->digits)) {
      return DISP_E_TYPEMISMATCH;
    }
    if (!ReadAfter()) return DISP_E_TYPEMISMATCH;
    number->digits.negative = minus_ || parenthesis_;
    return S_OK;
  }

 private:
  OLECHAR Peek() const { return at_ == end_ ? OLECHAR{0} : *at_; }
  bool Take(OLECHAR c) {
    if (Peek() != c || at_ == end_) return false;
    ++at_;
    return true;
  }
  // Sets a mark; false if it was set.
  static bool Once(bool* mark) {
    const bool first = !*mark;
    *mark = true;
    return first;
  }

  // Spaces, signs, "(" and "$" in any order.
  bool ReadBefore() {
    for (;;) {
      if (at_ != end_ && IsSpaceCharacter(*at_)) {
        ++at_;
      } else if (Take(u'+')) {
        if (!Once(&plus_)) return false;
      } else if (Take(u'-')) {
        if (!Once(&minus_)) return false;
      } else if (Take(u'(')) {
        if (!Once(&parenthesis_)) return false;
      } else if (Take(u'$')) {
        if (!Once(&currency_before_)) return false;
      } else {
        return true;
      }
    }
  }

  // Spaces, signs, "$", and ")" if "(" was read; nothing else may follow.
  bool ReadAfter() {
    bool closed = false;
    bool currency = false;
    while (at_ != end_) {
      if (IsSpaceCharacter(*at_)) {
        ++at_;
      } else if (Take(u'+')) {
        if (!Once(&plus_)) return false;
      } else if (Take(u'-')) {
        if (!Once(&minus_)) return false;
      } else if (Take(u')')) {
        if (!parenthesis_ || !Once(&closed)) return false;
      } else if (Take(u'$')) {
        if (!Once(&currency)) return false;
      } else {
        return false;
      }
    }
    return closed == parenthesis_;
  }

  HRESULT ReadBits(NumberText* number) {
    Take(u'&');
    int base = 0;
    if (Take(u'H') || Take(u'h')) base = 16;
    if (base == 0 && (Take(u'O') || Take(u'o'))) base = 8;
    if (base == 0 || DigitValue(Peek(), base) < 0) return DISP_E_TYPEMISMATCH;
    number->is_bits = true;
    bool fits = true;
    for (int digit; (digit = DigitValue(Peek(), base)) >= 0; ++at_) {
      fits = fits && number->bits <= ~ULONGLONG{0} / static_cast<unsigned>(base);
      number->bits = number->bits * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
    }
    return fits ? S_OK : DISP_E_OVERFLOW;
  }

  // Digits with separators after the first, a point, and an exponent that has digits.
  bool ReadDigits(Digits* digits) {
    bool any = false;
    bool point = false;
    int scale = 0;
    for (; at_ != end_; ++at_) {
      const OLECHAR c = *at_;
      if (IsDecimalDigit(c)) {
        any = true;
        digits->Append(static_cast<BYTE>(c - u'0'));
        if (point) ++scale;
      } else if (c == u'.' && !point) {
        point = true;
      } else if (c != u',' || !any) {
        break;
      }
    }
    if (!any) return false;
    int exponent = 0;
    if (!ReadExponent(&exponent)) return false;
    digits->exponent += exponent - scale;
    digits->StripTrailingZeros();
    return true;
  }

  bool ReadExponent(int* exponent) {
    if (!Take(u'e') && !Take(u'E')) return true;
    bool negative = false;
    // The platform takes "+-" too.
    Take(u'+');
    if (Take(u'-')) negative = true;
    if (!IsDecimalDigit(Peek())) return false;
    constexpr int kBeyondAnyRange = 100000;
    for (; IsDecimalDigit(Peek()); ++at_) {
      if (*exponent < kBeyondAnyRange) *exponent = *exponent * 10 + (*at_ - u'0');
    }
    if (negative) *exponent = -*exponent;
    return true;
  }

  const OLECHAR* at_;
  const OLECHAR* end_;
  bool plus_ = false;
  bool minus_ = false;
  bool parenthesis_ = false;
  bool currency_before_ = false;
};

}  // namespace

HRESULT ParseNumberText(const OLECHAR* text, UINT length, NumberText* number) {
  *number = NumberText();
  return Reader(text, length).Read(number);
}

BSTR TextOfDigits(const Digits& number) {
  OLECHAR text[kPlainTextCapacity];
  return SysAllocStringLen(text, DigitsToText(number, text));
}

BSTR TextOfReal(double value, int significant) {
  if (std::isnan(value)) return SysAllocString(OLESTR("NAN"));
  if (std::isinf(value)) return SysAllocString(value < 0 ? OLESTR("-INF") : OLESTR("INF"));
  if (value == 0) return SysAllocString(OLESTR("0"));  // minus zero too
  // More digits than are shown, so that the rounding is correct.
  constexpr int kExact = 40;
  Digits digits = DigitsOfReal(value, kExact);
  RoundDigits(&digits, significant, Halves::kAwayFromZero);
  const int exponent = digits.count + digits.exponent - 1;  // of the first digit
  constexpr int kLeastPlain = -4;
  if (exponent >= kLeastPlain && exponent < significant) return TextOfDigits(digits);
  digits.exponent = 1 - digits.count;
  OLECHAR text[kPlainTextCapacity];
  UINT length = DigitsToText(digits, text);
  text[length++] = u'E';
  text[length++] = exponent < 0 ? u'-' : u'+';
  const int magnitude = std::abs(exponent);
  if (magnitude >= 100) text[length++] = static_cast<OLECHAR>(u'0' + magnitude / 100);
  text[length++] = static_cast<OLECHAR>(u'0' + magnitude / 10 % 10);
  text[length++] = static_cast<OLECHAR>(u'0' + magnitude % 10);
  return SysAllocStringLen(text, length);
}

}  // namespace mirolta::runtime
