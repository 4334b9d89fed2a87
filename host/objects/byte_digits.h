// Bytes in hexadecimal and base64, in the strict forms: digits of both letter cases but nothing
// between them, and base64 with its padding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mirolta::host {

// HexLength and Base64Length return the length of the text of `count` bytes.
constexpr size_t HexLength(size_t count) {
  return 2 * count;
}
constexpr size_t Base64Length(size_t count) {
  return (count + 2) / 3 * 4;
}

// EncodeHex and EncodeBase64 write the text of bytes[0..count).
// Shapes: text[HexLength(count)] in lower case, text[Base64Length(count)]; no terminator
// Source: RFC 4648, sections 8 and 4
void EncodeHex(const uint8_t* bytes, size_t count, char* text);
void EncodeBase64(const uint8_t* bytes, size_t count, char* text);

// HexByteCount and Base64ByteCount return the number of bytes that a valid text stands for.
size_t HexByteCount(std::string_view text);
size_t Base64ByteCount(std::string_view text);

// DecodeHex and DecodeBase64 read a text.
// Shapes: bytes[HexByteCount(text)], bytes[Base64ByteCount(text)]
// Errors: false if the text is not in the strict form; the bytes are then unspecified.
bool DecodeHex(std::string_view text, uint8_t* bytes);
bool DecodeBase64(std::string_view text, uint8_t* bytes);

}  // namespace mirolta::host
