// 32-bit words of digests: rotation, and conversion from and to bytes in either byte order at any
// alignment.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mirolta {

// Kernels are unrolled by templates, a function a step; every step is inlined into one body.
#define MIROLTA_STEP __attribute__((always_inline)) inline

// Shapes: 0 < count < 32.
constexpr uint32_t RotateLeft(uint32_t word, unsigned count) noexcept {
  return word << count | word >> (32 - count);
}
constexpr uint32_t RotateRight(uint32_t word, unsigned count) noexcept {
  return word >> count | word << (32 - count);
}

MIROLTA_STEP uint32_t LoadLowFirst(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 |
         uint32_t{bytes[3]} << 24;
}
MIROLTA_STEP uint32_t LoadHighFirst(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[3]} | uint32_t{bytes[2]} << 8 | uint32_t{bytes[1]} << 16 |
         uint32_t{bytes[0]} << 24;
}
constexpr uint32_t SwapBytes(uint32_t word) noexcept {
  return __builtin_bswap32(word);
}
// Words are stored whole: compilers turn byte stores of neighbouring words into slow shuffles.
MIROLTA_STEP void StoreLowFirst(uint32_t word, uint8_t* bytes) noexcept {
  if constexpr (std::endian::native != std::endian::little) word = SwapBytes(word);
  std::memcpy(bytes, &word, sizeof word);
}
MIROLTA_STEP void StoreHighFirst(uint32_t word, uint8_t* bytes) noexcept {
  if constexpr (std::endian::native != std::endian::big) word = SwapBytes(word);
  std::memcpy(bytes, &word, sizeof word);
}

}  // namespace mirolta
