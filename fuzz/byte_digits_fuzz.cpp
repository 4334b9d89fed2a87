// Bytes as hexadecimal and base64 text: what is written is read back, and any text is read or refused as a
// reader of single characters does.
#include <algorithm>
#include <string_view>

#include "fuzz_input.h"
#include "objects/byte_digits.h"

using namespace mirolta::fuzz;
using namespace mirolta::host;

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The bytes that characters of so many bits each stand for; false for another character, and for bits
// that are left over and not zero.
bool ReadDigits(std::string_view text, std::string_view digits, unsigned bits, Bytes* bytes) {
  unsigned waiting = 0, value = 0;
  for (const char c : text) {
    const size_t digit = digits.find(c);
    if (digit == digits.npos) return false;
    value = value << bits | static_cast<unsigned>(digit);
    waiting += bits;
    if (waiting < 8) continue;
    waiting -= 8;
    bytes->push_back(static_cast<uint8_t>(value >> waiting));
    value &= (1u << waiting) - 1;
  }
  return value == 0;
}

bool ReadHex(std::string text, Bytes* bytes) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
  }
  return text.size() % 2 == 0 && ReadDigits(text, kHexDigits, 4, bytes);
}

bool ReadBase64(std::string_view text, Bytes* bytes) {
  if (text.size() % 4 != 0) return false;
  for (int i = 0; i < 2 && text.ends_with('='); ++i) text.remove_suffix(1);
  return ReadDigits(text, kBase64Digits, 6, bytes);
}

void CheckText(std::string_view text) {
  Bytes expected, bytes(text.size() + 1);
  if (ReadHex(std::string(text), &expected)) {
    FUZZ_CHECK(HexByteCount(text) == expected.size() && DecodeHex(text, bytes.data()));
    FUZZ_CHECK(std::equal(expected.begin(), expected.end(), bytes.begin()));
  } else {
    bytes.resize(HexByteCount(text) + 1);
    FUZZ_CHECK(!DecodeHex(text, bytes.data()));
  }
  expected.clear();
  if (ReadBase64(text, &expected)) {
    FUZZ_CHECK(Base64ByteCount(text) == expected.size() && DecodeBase64(text, bytes.data()));
    FUZZ_CHECK(std::equal(expected.begin(), expected.end(), bytes.begin()));
  } else {
    bytes.resize(Base64ByteCount(text) + 1);
    FUZZ_CHECK(!DecodeBase64(text, bytes.data()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string given(data, data + size);
  CheckText(given);
  std::string text(HexLength(size), '\0');
  EncodeHex(data, size, text.data());
  Bytes read;
  FUZZ_CHECK(ReadHex(text, &read) && std::equal(read.begin(), read.end(), data, data + size));
  text.assign(Base64Length(size), '\0');
  EncodeBase64(data, size, text.data());
  read.clear();
  FUZZ_CHECK(ReadBase64(text, &read) && std::equal(read.begin(), read.end(), data, data + size));
  CheckText(text);
  return 0;
}
