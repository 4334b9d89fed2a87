// MixColumns and its inverse on a column in one word, the first row in its lowest byte.
#pragma once

#include <bit>
#include <cstdint>

namespace mirolta {

// DoubleBytes multiplies each byte of a word by 2 in GF(2^8).
// Source: FIPS-197, 4.2.1.
inline uint32_t DoubleBytes(uint32_t word) {
  const uint32_t high = word & 0x80808080;
  return (word ^ high) << 1 ^ (high >> 7) * 0x1B;
}

// MixColumn: each byte becomes 2 s0 + 3 s1 + s2 + s3 of itself and those after it.
// Source: FIPS-197, 5.1.3.
inline uint32_t MixColumn(uint32_t word) {
  const uint32_t doubled = DoubleBytes(word);
  return doubled ^ std::rotr(word ^ doubled, 8) ^ std::rotr(word, 16) ^ std::rotr(word, 24);
}

// UnmixColumn: (14, 11, 13, 9) = (2, 3, 1, 1) * (5, 0, 4, 0), so it is MixColumn of w + 4 (w + w'), where w'
// is w with its halves exchanged.
// Source: FIPS-197, 5.3.3; Daemen and Rijmen, The Design of Rijndael, 4.1.3.
inline uint32_t UnmixColumn(uint32_t word) {
  return MixColumn(word ^ DoubleBytes(DoubleBytes(word ^ std::rotr(word, 16))));
}

}  // namespace mirolta
