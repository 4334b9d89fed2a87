#include "objects/byte_digits.h"

#include <array>

namespace mirolta::host {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kUpperHexDigits = "ABCDEF";
constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kNoDigit = 0xFF;

using DigitValues = std::array<uint8_t, 256>;

constexpr void AddDigits(std::string_view digits, size_t first, DigitValues* values) {
  for (size_t i = 0; i < digits.size(); ++i) {
    (*values)[static_cast<uint8_t>(digits[i])] = static_cast<uint8_t>(first + i);
  }
}

constexpr DigitValues ValuesOf(std::string_view digits, std::string_view more, size_t first_more) {
  DigitValues values{};
  values.fill(kNoDigit);
  AddDigits(digits, 0, &values);
  AddDigits(more, first_more, &values);
  return values;
}

constexpr DigitValues kHexValues = ValuesOf(kHexDigits, kUpperHexDigits, 10);
constexpr DigitValues kBase64Values = ValuesOf(kBase64Digits, {}, 0);

constexpr uint32_t ValueOf(const DigitValues& values, char digit) {
  return values[static_cast<uint8_t>(digit)];
}

// The number of padding characters.
size_t PadCount(std::string_view text) {
  if (!text.ends_with('=')) return 0;
  return text.ends_with("==") ? 2 : 1;
}

}  // namespace

void EncodeHex(const uint8_t* bytes, size_t count, char* text) {
  for (size_t i = 0; i < count; ++i) {
    *text++ = kHexDigits[bytes[i] >> 4];
    *text++ = kHexDigits[bytes[i] & 15];
  }
}

void EncodeBase64(const uint8_t* bytes, size_t count, char* text) {
  for (size_t i = 0; i < count; i += 3) {
    const size_t left = count - i;
    const uint32_t second = left > 1 ? bytes[i + 1] : 0u;
    const uint32_t third = left > 2 ? bytes[i + 2] : 0u;
    const uint32_t three = uint32_t{bytes[i]} << 16 | second << 8 | third;
    *text++ = kBase64Digits[three >> 18];
    *text++ = kBase64Digits[three >> 12 & 63];
    *text++ = left > 1 ? kBase64Digits[three >> 6 & 63] : '=';
    *text++ = left > 2 ? kBase64Digits[three & 63] : '=';
  }
}

size_t HexByteCount(std::string_view text) {
  return text.size() / 2;
}

size_t Base64ByteCount(std::string_view text) {
  return text.size() < 4 ? 0 : text.size() / 4 * 3 - PadCount(text);
}

bool DecodeHex(std::string_view text, uint8_t* bytes) {
  if (text.size() % 2 != 0) return false;
  uint32_t wrong = 0;
  for (size_t i = 0; i < text.size(); i += 2) {
    const uint32_t high = ValueOf(kHexValues, text[i]), low = ValueOf(kHexValues, text[i + 1]);
    wrong |= high | low;
    *bytes++ = static_cast<uint8_t>(high << 4 | low);
  }
  return wrong < 16;
}

bool DecodeBase64(std::string_view text, uint8_t* bytes) {
  if (text.size() % 4 != 0) return false;
  const size_t digits = text.size() - PadCount(text);
  uint32_t wrong = 0, held = 0, bits = 0;
  for (size_t i = 0; i < digits; ++i) {
    const uint32_t value = ValueOf(kBase64Values, text[i]);
    wrong |= value;
    held = (held << 6 | (value & 63)) & 0xFFFF;
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      *bytes++ = static_cast<uint8_t>(held >> bits);
    }
  }
  const bool has_spare_bits = (held & ((1u << bits) - 1)) != 0;
  return wrong < 64 && !has_spare_bits;
}

}  // namespace mirolta::host
