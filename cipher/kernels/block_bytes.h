// Words of cipher blocks, at any alignment. DES is big-endian; AES has no byte order of its own,
// and its kernels are little-endian.
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

inline uint32_t LoadLittleEndian32(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[3]} << 24 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[1]} << 8 | bytes[0];
}

inline void StoreLittleEndian32(uint8_t* bytes, uint32_t word) noexcept {
  bytes[0] = static_cast<uint8_t>(word);
  bytes[1] = static_cast<uint8_t>(word >> 8);
  bytes[2] = static_cast<uint8_t>(word >> 16);
  bytes[3] = static_cast<uint8_t>(word >> 24);
}

}  // namespace mirolta
