// Byte strings of tests.
#pragma once

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mirolta::test {

using Bytes = std::vector<uint8_t>;

inline Bytes BytesOf(std::string_view text) {
  return Bytes(text.begin(), text.end());
}

// BytesOfHex throws for text that is not whole bytes in hexadecimal.
inline Bytes BytesOfHex(std::string_view hex) {
  const auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw std::runtime_error("not hexadecimal");
  };
  if (hex.size() % 2 != 0) throw std::runtime_error("half a byte");
  Bytes bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(nibble(hex[i]) << 4 | nibble(hex[i + 1])));
  }
  return bytes;
}

inline std::string HexOf(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Bytes Part(const Bytes& bytes, size_t start, size_t count) {
  return Bytes(bytes.begin() + static_cast<ptrdiff_t>(start),
               bytes.begin() + static_cast<ptrdiff_t>(start + count));
}
inline Bytes Head(const Bytes& bytes, size_t count) {
  return Part(bytes, 0, count);
}
inline Bytes Tail(const Bytes& bytes, size_t start) {
  return Part(bytes, start, bytes.size() - start);
}

// The same bytes for the same arguments, without a short period.
inline Bytes PatternBytes(size_t count, uint32_t seed = 1) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) {
    seed = seed * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(seed >> 24);
  }
  return bytes;
}

// A number less than bound.
inline uint32_t Below(std::mt19937& random, uint32_t bound) {
  return static_cast<uint32_t>(random() % bound);
}

inline Bytes RandomBytes(std::mt19937& random, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

}  // namespace mirolta::test
