#include "objects/byte_digits.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace mirolta::host {
namespace {

std::string Base64Of(const std::string& bytes) {
  std::string text(Base64Length(bytes.size()), '#');
  EncodeBase64(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), text.data());
  return text;
}

std::string HexOf(const std::string& bytes) {
  std::string text(HexLength(bytes.size()), '#');
  EncodeHex(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), text.data());
  return text;
}

// The bytes of a text, "refused" for one that is not in the strict form.
template <size_t (*Count)(std::string_view), bool (*Decode)(std::string_view, uint8_t*)>
std::string BytesOf(std::string_view text) {
  std::string bytes(Count(text), '#');
  return Decode(text, reinterpret_cast<uint8_t*>(bytes.data())) ? bytes : "refused";
}
constexpr auto kBytesOfBase64 = BytesOf<Base64ByteCount, DecodeBase64>;
constexpr auto kBytesOfHex = BytesOf<HexByteCount, DecodeHex>;

// Source: RFC 4648, section 10
TEST(ByteDigits, ThePublishedTextsAreWrittenAndRead) {
  static constexpr struct {
    const char* bytes;
    const char* base64;
    const char* hex;
  } kVectors[] = {
      {"", "", ""},
      {"f", "Zg==", "66"},
      {"fo", "Zm8=", "666f"},
      {"foo", "Zm9v", "666f6f"},
      {"foob", "Zm9vYg==", "666f6f62"},
      {"fooba", "Zm9vYmE=", "666f6f6261"},
      {"foobar", "Zm9vYmFy", "666f6f626172"},
  };
  for (const auto& one : kVectors) {
    EXPECT_EQ(Base64Of(one.bytes), one.base64);
    EXPECT_EQ(kBytesOfBase64(one.base64), one.bytes);
    EXPECT_EQ(HexOf(one.bytes), one.hex);
    EXPECT_EQ(kBytesOfHex(one.hex), one.bytes);
  }
}

TEST(ByteDigits, EveryDigitStandsForItsBits) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t value = 0; value < 64; ++value) {
    for (size_t place = 0; place < 4; ++place) {
      std::string text = "AAAA", bytes(3, '\0');
      text[place] = digits[value];
      const size_t bits = value << (6 * (3 - place));
      for (size_t i = 0; i < 3; ++i) bytes[i] = static_cast<char>(bits >> (8 * (2 - i)));
      EXPECT_EQ(kBytesOfBase64(text), bytes) << text;
      EXPECT_EQ(Base64Of(bytes), text);
    }
  }
  EXPECT_EQ(kBytesOfHex("0123456789abcdefABCDEF"), "\x01\x23\x45\x67\x89\xAB\xCD\xEF\xAB\xCD\xEF");
}

TEST(ByteDigits, OtherCharactersAreRefusedInEveryPlace) {
  const std::string_view base64 =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::string_view hex = "0123456789abcdefABCDEF";
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    for (size_t place = 0; place < 8; ++place) {
      std::string text = "AAAAAAAA";
      text[place] = c;
      // At the end it pads.
      const bool is_base64 = base64.find(c) != std::string_view::npos || (c == '=' && place == 7);
      EXPECT_EQ(kBytesOfBase64(text) != "refused", is_base64) << code << " at " << place;
      const bool is_hex = hex.find(c) != std::string_view::npos;
      EXPECT_EQ(kBytesOfHex(text) != "refused", is_hex) << code << " at " << place;
    }
  }
}

TEST(ByteDigits, WrongLengthsPaddingAndSpareBitsAreRefused) {
  for (const char* text : {"A", "AA", "AAA", "AAAAA", "=", "====", "A===", "AA=A", "AAA=AAAA",
                           "AA==AAAA", "AB==", "AAB=", "AAAAAB==", "AA=", "AAAA="}) {
    EXPECT_EQ(kBytesOfBase64(text), "refused") << text;
  }
  for (const char* text : {"0", "000", "0x00", "00 "})
    EXPECT_EQ(kBytesOfHex(text), "refused") << text;
}

}  // namespace
}  // namespace mirolta::host
