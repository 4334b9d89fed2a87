// Table look-ups as 32-bit ARM does them best: a field of a word, shifted and masked by one
// instruction, is the offset in bytes that the load adds to the table's address.
#pragma once

#include <cstdint>
#include <cstring>

namespace mirolta {

// OpaqueMask returns mask, as a value that the compiler does not know. It keeps such a mask in a
// register, and does not split AND with a shifted operand into a shift and an AND with a constant.
inline uint32_t OpaqueMask(uint32_t mask) {
  __asm__("" : "+r"(mask));
  return mask;
}

// MaskedField returns the bits of word from 8 * kByte on, moved to bit kScale and masked.
template <int kByte, int kScale>
inline uint32_t MaskedField(uint32_t word, uint32_t mask) {
  constexpr int kShift = 8 * kByte - kScale;
  if constexpr (kShift < 0) {
    return word << -kShift & mask;
  } else {
    return word >> kShift & mask;
  }
}

// WordAt returns the word of table that is `offset` bytes, a multiple of 4, from its start.
inline uint32_t WordAt(const uint32_t* table, uint32_t offset) {
  uint32_t word;
  std::memcpy(&word, __builtin_assume_aligned(reinterpret_cast<const char*>(table) + offset, 4),
              sizeof word);
  return word;
}

}  // namespace mirolta
