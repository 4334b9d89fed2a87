// Byte strings of the cipher tests.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace mirolta {

using Bytes = std::vector<uint8_t>;

inline int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// FromHex returns the bytes of a text of digit pairs; what is no digit counts as 0xEE and fails
// whatever compares it.
inline Bytes FromHex(const std::string& text) {
  Bytes bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    const int high = HexDigit(text[i]);
    const int low = HexDigit(text[i + 1]);
    bytes.push_back(static_cast<uint8_t>(high < 0 || low < 0 ? 0xEE : high * 16 + low));
  }
  return bytes;
}

// Below returns a number less than bound.
inline uint32_t Below(std::mt19937& random, uint32_t bound) {
  return static_cast<uint32_t>(random() % bound);
}

inline Bytes RandomBytes(std::mt19937& random, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Bytes Part(const Bytes& bytes, size_t start, size_t count) {
  return Bytes(bytes.begin() + static_cast<ptrdiff_t>(start),
               bytes.begin() + static_cast<ptrdiff_t>(start + count));
}

}  // namespace mirolta
