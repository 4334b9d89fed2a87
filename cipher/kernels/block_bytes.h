// Words of cipher blocks, whose first byte is the most significant one.
#pragma once

#include <cstdint>

namespace mirolta {

inline uint32_t LoadBigEndian32(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

inline void StoreBigEndian32(uint8_t* bytes, uint32_t word) noexcept {
  bytes[0] = static_cast<uint8_t>(word >> 24);
  bytes[1] = static_cast<uint8_t>(word >> 16);
  bytes[2] = static_cast<uint8_t>(word >> 8);
  bytes[3] = static_cast<uint8_t>(word);
}

}  // namespace mirolta
