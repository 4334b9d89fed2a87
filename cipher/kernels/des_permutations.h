// The initial and the final permutation of DES (FIPS 46-3), as exchanges of bits between two words.
#pragma once

#include <bit>

#include "platform.h"

namespace mirolta {

// Exchanges the bits of b that mask selects with the bits of a that are shift higher.
inline void ExchangeBits(uint32_t& a, uint32_t& b, int shift, uint32_t mask) {
  const uint32_t difference = (a >> shift ^ b) & mask;
  b ^= difference;
  a ^= difference << shift;
}

// The halves of a block between the initial and the final permutation, each rotated left by one
// bit. The inputs of the even S-boxes are then the lower six bits of the half's bytes, and those of
// the odd ones the lower six bits of the bytes of the half rotated right by four.
struct Halves {
  uint32_t left;
  uint32_t right;
};

inline Halves PermuteInitially(uint32_t left, uint32_t right) {
  ExchangeBits(left, right, 4, 0x0F0F0F0F);
  ExchangeBits(left, right, 16, 0x0000FFFF);
  ExchangeBits(right, left, 2, 0x33333333);
  ExchangeBits(right, left, 8, 0x00FF00FF);
  // The last exchange is by one bit; with the right half rotated first it needs no shift.
  right = std::rotl(right, 1);
  ExchangeBits(left, right, 0, 0xAAAAAAAA);
  return {std::rotl(left, 1), right};
}
inline Halves PermuteInitially(const uint8_t* block) {
  return PermuteInitially(LoadBigEndian32(block), LoadBigEndian32(block + 4));
}

// The same steps in reverse, on the halves as the last round leaves them, exchanged. Returns the two
// words of the block.
inline Halves PermuteFinally(Halves halves) {
  uint32_t left = std::rotr(halves.right, 1);
  uint32_t right = halves.left;
  ExchangeBits(left, right, 0, 0xAAAAAAAA);
  right = std::rotr(right, 1);
  ExchangeBits(right, left, 8, 0x00FF00FF);
  ExchangeBits(right, left, 2, 0x33333333);
  ExchangeBits(left, right, 16, 0x0000FFFF);
  ExchangeBits(left, right, 4, 0x0F0F0F0F);
  return {left, right};
}
inline void PermuteFinally(Halves halves, uint8_t* block) {
  const Halves words = PermuteFinally(halves);
  StoreBigEndian32(block, words.left);
  StoreBigEndian32(block + 4, words.right);
}

}  // namespace mirolta
