#include "values/variant_decimal.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace mirolta::runtime {
namespace {

constexpr int kCurrencyScale = 4;

// A 96-bit integer, least significant word first.
struct Wide {
  uint32_t words[3] = {0, 0, 0};
};

// wide := wide * 10 + digit; false if that needs more than 96 bits.
bool TimesTenPlus(Wide* wide, uint32_t digit) {
  uint64_t carry = digit;
  for (uint32_t& word : wide->words) {
    carry += uint64_t{word} * 10;
    word = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  return carry == 0;
}

// wide := wide / 10; returns the remainder.
BYTE DivideByTen(Wide* wide) {
  uint64_t rest = 0;
  for (int i = 2; i >= 0; --i) {
    rest = (rest << 32) | wide->words[i];
    wide->words[i] = static_cast<uint32_t>(rest / 10);
    rest %= 10;
  }
  return static_cast<BYTE>(rest);
}

Digits DigitsOfWide(bool negative, Wide wide, int scale) {
  BYTE reversed[Digits::kCapacity];
  int count = 0;
  while ((wide.words[0] | wide.words[1] | wide.words[2]) != 0)
    reversed[count++] = DivideByTen(&wide);
  Digits number;
  number.negative = negative && count > 0;
  while (count > 0) number.Append(reversed[--count]);
  number.exponent -= scale;
  number.StripTrailingZeros();
  return number;
}

Digits DigitsOfScaled(bool negative, ULONGLONG magnitude, int scale) {
  Wide wide;
  wide.words[0] = static_cast<uint32_t>(magnitude);
  wide.words[1] = static_cast<uint32_t>(magnitude >> 32);
  return DigitsOfWide(negative, wide, scale);
}

// Magnitude of a two's complement number, the least one included.
ULONGLONG Magnitude(LONGLONG value) {
  const ULONGLONG bits = static_cast<ULONGLONG>(value);
  return value < 0 ? ~bits + 1 : bits;
}

}  // namespace

void Digits::Append(BYTE digit) {
  if (count == 0 && digit == 0) return;
  if (count < kCapacity) {
    digits[count++] = digit;
    return;
  }
  more = more || digit != 0;
  ++exponent;
}

void Digits::StripTrailingZeros() {
  if (more) return;  // what was cut off follows these zeros
  while (count > 0 && digits[count - 1] == 0) {
    --count;
    ++exponent;
  }
  if (count == 0) exponent = 0;
}

Digits DigitsOfInteger(bool negative, ULONGLONG magnitude) {
  return DigitsOfScaled(negative, magnitude, 0);
}

Digits DigitsOfCurrency(CY value) {
  return DigitsOfScaled(value.int64 < 0, Magnitude(value.int64), kCurrencyScale);
}

DECIMAL DecimalOfCurrency(CY value) {
  const ULONGLONG magnitude = Magnitude(value.int64);
  DECIMAL made;
  memset(&made, 0, sizeof made);
  made.scale = kCurrencyScale;
  made.sign = value.int64 < 0 ? DECIMAL_NEG : BYTE{0};
  made.Lo32 = static_cast<ULONG>(magnitude);
  made.Mid32 = static_cast<ULONG>(magnitude >> 32);
  return made;
}

Digits DigitsOfDecimal(const DECIMAL& value) {
  Wide wide;
  wide.words[0] = value.Lo32;
  wide.words[1] = value.Mid32;
  wide.words[2] = value.Hi32;
  return DigitsOfWide((value.sign & DECIMAL_NEG) != 0, wide, value.scale);
}

Digits DigitsOfReal(double value, int significant) {
  // "d.ddde+xx", independent of the process's locale.
  char text[Digits::kCapacity];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, std::fabs(value),
                                                 std::chars_format::scientific, significant - 1);
  const char* at = text;
  Digits number;
  number.negative = std::signbit(value);
  for (; at != end.ptr && *at != 'e'; ++at) {
    if (*at != '.') number.Append(static_cast<BYTE>(*at - '0'));
  }
  int exponent = 0;
  if (at != end.ptr) {
    ++at;
    const bool negative = *at == '-';
    for (++at; at != end.ptr; ++at) exponent = exponent * 10 + (*at - '0');
    if (negative) exponent = -exponent;
  }
  number.exponent = exponent - (significant - 1);
  number.StripTrailingZeros();
  return number;
}

void RoundDigits(Digits* number, int keep, Halves halves) {
  if (keep >= number->count) return;
  if (keep < 0 || number->count == 0) {
    number->count = 0;
    number->exponent = 0;
    return;
  }
  bool beyond = number->more;
  for (int i = keep + 1; i < number->count; ++i) beyond = beyond || number->digits[i] != 0;
  const BYTE first = number->digits[keep];
  const bool odd = keep > 0 && number->digits[keep - 1] % 2 != 0;
  const bool half_up = beyond || odd || halves == Halves::kAwayFromZero;
  const bool up = first > 5 || (first == 5 && half_up);
  number->exponent += number->count - keep;
  number->count = keep;
  number->more = false;
  if (up) {
    int at = keep - 1;
    while (at >= 0 && number->digits[at] == 9) number->digits[at--] = 0;
    if (at >= 0) {
      ++number->digits[at];
    } else {
      // 99.9 became 100: the first digit is 1, the others are zeros.
      number->digits[0] = 1;
      number->exponent += keep;
      number->count = 1;
    }
  }
  number->StripTrailingZeros();
}

bool DigitsToInteger(Digits number, ULONGLONG* magnitude) {
  RoundDigits(&number, number.count + number.exponent);
  ULONGLONG value = 0;
  if (!number.IsZero() && number.count + number.exponent > 20) return false;
  for (int i = 0; i < number.count + number.exponent; ++i) {
    const BYTE digit = i < number.count ? number.digits[i] : BYTE{0};
    if (value > (~ULONGLONG{0} - digit) / 10) return false;
    value = value * 10 + digit;
  }
  *magnitude = value;
  return true;
}

bool DigitsToCurrency(Digits number, CY* value) {
  number.exponent += kCurrencyScale;
  ULONGLONG magnitude = 0;
  if (!DigitsToInteger(number, &magnitude)) return false;
  constexpr ULONGLONG kLeast = ULONGLONG{1} << 63;
  if (magnitude > (number.negative ? kLeast : kLeast - 1)) return false;
  value->int64 = static_cast<LONGLONG>(number.negative ? ~magnitude + 1 : magnitude);
  return true;
}

bool DigitsToDecimal(const Digits& number, DECIMAL* value) {
  memset(value, 0, sizeof *value);
  // Drops one digit at a time until scale and 96 bits suffice; digits before the point are kept.
  for (int keep = number.count; keep >= 0; --keep) {
    Digits rounded = number;
    RoundDigits(&rounded, keep);
    if (rounded.IsZero()) return true;
    if (rounded.exponent < -kMaxDecimalScale) continue;
    const int zeros = rounded.exponent > 0 ? rounded.exponent : 0;
    if (rounded.count + zeros > kMaxDecimalScale + 1) {
      if (rounded.exponent >= 0) return false;
      continue;
    }
    Wide wide;
    bool fits = true;
    for (int i = 0; fits && i < rounded.count + zeros; ++i) {
      fits = TimesTenPlus(&wide, i < rounded.count ? rounded.digits[i] : 0);
    }
    if (!fits) {
      if (rounded.exponent >= 0) return false;
      continue;
    }
    value->scale = static_cast<BYTE>(rounded.exponent < 0 ? -rounded.exponent : 0);
    value->sign = rounded.negative ? DECIMAL_NEG : BYTE{0};
    value->Lo32 = wide.words[0];
    value->Mid32 = wide.words[1];
    value->Hi32 = wide.words[2];
    return true;
  }
  return true;
}

bool DigitsToReal(const Digits& number, double* value) {
  // The digits, one digit for those that were cut off, and the exponent. Without a decimal point
  // strtod reads it alike in every locale. Some supported libraries lack std::from_chars for reals.
  char text[Digits::kCapacity + 24];
  char* at = text;
  for (int i = 0; i < number.count; ++i) *at++ = static_cast<char>('0' + number.digits[i]);
  if (number.count == 0) *at++ = '0';
  int exponent = number.exponent;
  if (number.more) {
    *at++ = '1';
    --exponent;
  }
  *at++ = 'e';
  at = std::to_chars(at, text + sizeof text - 1, exponent).ptr;
  *at = '\0';
  const double read = std::strtod(text, nullptr);
  if (std::isinf(read)) return false;
  *value = number.negative ? -read : read;
  return true;
}

UINT DigitsToText(const Digits& number, OLECHAR* text) {
  UINT length = 0;
  if (number.negative && !number.IsZero()) text[length++] = u'-';
  const int whole = number.count + number.exponent;  // digits before the point
  if (number.IsZero() || whole <= 0) text[length++] = u'0';
  for (int i = 0; i < whole; ++i) {
    text[length++] = static_cast<OLECHAR>(i < number.count ? u'0' + number.digits[i] : u'0');
  }
  if (number.exponent < 0 && !number.IsZero()) {
    text[length++] = u'.';
    for (int i = whole; i < number.count; ++i) {
      text[length++] = static_cast<OLECHAR>(i < 0 ? u'0' : u'0' + number.digits[i]);
    }
  }
  return length;
}

}  // namespace mirolta::runtime
