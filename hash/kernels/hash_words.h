// 32-bit words of digests: rotation, and their bytes in either order at any alignment.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

// Kernels are unrolled by templates, one function a step; every step belongs in the one body.
#define MIROLTA_STEP [[gnu::always_inline]] inline

// 0 < count < 32.
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
inline void StoreLowFirst(uint32_t word, uint8_t* bytes) noexcept {
  for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}
inline void StoreHighFirst(uint32_t word, uint8_t* bytes) noexcept {
  for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(word >> (24 - 8 * i));
}

}  // namespace mirolta
