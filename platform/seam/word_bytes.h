// 32-bit words and their bytes, in either byte order.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace mirolta {

// LoadLittleEndian32 and LoadBigEndian32 return the word of bytes[4], the others store it.
// Shapes: bytes[4] at any alignment.
__attribute__((always_inline)) inline uint32_t LoadLittleEndian32(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 |
         uint32_t{bytes[3]} << 24;
}

__attribute__((always_inline)) inline uint32_t LoadBigEndian32(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[3]} | uint32_t{bytes[2]} << 8 | uint32_t{bytes[1]} << 16 |
         uint32_t{bytes[0]} << 24;
}

// Words are stored whole: compilers turn byte stores of neighbouring words into slow shuffles.
__attribute__((always_inline)) inline void StoreLittleEndian32(uint8_t* bytes,
                                                               uint32_t word) noexcept {
  if constexpr (std::endian::native != std::endian::little) word = __builtin_bswap32(word);
  std::memcpy(bytes, &word, sizeof word);
}

__attribute__((always_inline)) inline void StoreBigEndian32(uint8_t* bytes,
                                                            uint32_t word) noexcept {
  if constexpr (std::endian::native != std::endian::big) word = __builtin_bswap32(word);
  std::memcpy(bytes, &word, sizeof word);
}

// IsWordAligned tells whether words at that address may be loaded and stored whole, which
// LoadAlignedLittleEndian32, LoadAlignedBigEndian32 and the stores of these names do.
inline bool IsWordAligned(const void* address) noexcept {
  return reinterpret_cast<uintptr_t>(address) % sizeof(uint32_t) == 0;
}

__attribute__((always_inline)) inline uint32_t LoadAlignedLittleEndian32(
    const uint8_t* bytes) noexcept {
  uint32_t word;
  std::memcpy(&word, __builtin_assume_aligned(bytes, sizeof word), sizeof word);
  if constexpr (std::endian::native != std::endian::little) word = __builtin_bswap32(word);
  return word;
}

__attribute__((always_inline)) inline uint32_t LoadAlignedBigEndian32(
    const uint8_t* bytes) noexcept {
  return __builtin_bswap32(LoadAlignedLittleEndian32(bytes));
}

__attribute__((always_inline)) inline void StoreAlignedLittleEndian32(uint8_t* bytes,
                                                                      uint32_t word) noexcept {
  if constexpr (std::endian::native != std::endian::little) word = __builtin_bswap32(word);
  std::memcpy(__builtin_assume_aligned(bytes, sizeof word), &word, sizeof word);
}

__attribute__((always_inline)) inline void StoreAlignedBigEndian32(uint8_t* bytes,
                                                                   uint32_t word) noexcept {
  StoreAlignedLittleEndian32(bytes, __builtin_bswap32(word));
}

}  // namespace mirolta
