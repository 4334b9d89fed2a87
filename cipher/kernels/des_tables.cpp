// Computed at compile time from the tables of FIPS 46-3, which number bits from 1 at the left.
#include "des_tables.h"

namespace mirolta {

namespace {

constexpr uint8_t kBoxes[8][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8, 3, 10, 6, 12, 5,  9,  0,  7,  0,  15, 7,  4,  14, 2,
     13, 1,  10, 6, 12, 11, 9,  5, 3, 8,  4, 1,  14, 8,  13, 6,  2,  11, 15, 12, 9,  7,
     3,  10, 5,  0, 15, 12, 8,  2, 4, 9,  1, 7,  5,  11, 3,  14, 10, 0,  6,  13},
    {15, 1,  8,  14, 6,  11, 3,  4, 9,  7,  2, 13, 12, 0,  5,  10, 3,  13, 4,  7, 15, 2,
     8,  14, 12, 0,  1,  10, 6,  9, 11, 5,  0, 14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,
     9,  3,  2,  15, 13, 8,  10, 1, 3,  15, 4, 2,  11, 6,  7,  12, 0,  5,  14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7, 11, 4,  2,  8,  13, 7, 0,  9, 3, 4,
     6,  10, 2,  8,  5, 14, 12, 11, 15, 1,  13, 6, 4,  9,  8,  15, 3,  0, 11, 1, 2, 12,
     5,  10, 14, 7,  1, 10, 13, 0,  6,  9,  8,  7, 4,  15, 14, 3,  11, 5, 2,  12},
    {7, 13, 14, 3, 0, 6,  9, 10, 1,  2, 8,  5, 11, 12, 4,  15, 13, 8,  11, 5, 6, 15,
     0, 3,  4,  7, 2, 12, 1, 10, 14, 9, 10, 6, 9,  0,  12, 11, 7,  13, 15, 1, 3, 14,
     5, 2,  8,  4, 3, 15, 0, 6,  10, 1, 13, 8, 9,  4,  5,  11, 12, 7,  2,  14},
    {2,  12, 4, 1,  7,  10, 11, 6, 8, 5,  3, 15, 13, 0,  14, 9,  14, 11, 2,  12, 4,  7,
     13, 1,  5, 0,  15, 10, 3,  9, 8, 6,  4, 2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,
     6,  3,  0, 14, 11, 8,  12, 7, 1, 14, 2, 13, 6,  15, 0,  9,  10, 4,  5,  3},
    {12, 1,  10, 15, 9,  2,  6, 8,  0, 13, 3,  4,  14, 7,  5, 11, 10, 15, 4, 2, 7, 12,
     9,  5,  6,  1,  13, 14, 0, 11, 3, 8,  9,  14, 15, 5,  2, 8,  12, 3,  7, 0, 4, 10,
     1,  13, 11, 6,  4,  3,  2, 12, 9, 5,  15, 10, 11, 14, 1, 7,  6,  0,  8, 13},
    {4, 11, 2,  14, 15, 0,  8,  13, 3, 12, 9,  7, 5,  10, 6,  1,  13, 0,  11, 7,  4, 9,
     1, 10, 14, 3,  5,  12, 2,  15, 8, 6,  1,  4, 11, 13, 12, 3,  7,  14, 10, 15, 6, 8,
     0, 5,  9,  2,  6,  11, 13, 8,  1, 4,  10, 7, 9,  5,  0,  15, 14, 2,  3,  12},
    {13, 2, 8,  4, 6, 15, 11, 1,  10, 9,  3, 14, 5,  0,  12, 7,  1,  15, 13, 8, 10, 3,
     7,  4, 12, 5, 6, 11, 0,  14, 9,  2,  7, 11, 4,  1,  9,  12, 14, 2,  0,  6, 10, 13,
     15, 3, 5,  8, 2, 1,  14, 7,  4,  10, 8, 13, 15, 12, 9,  0,  3,  5,  6,  11},
};

constexpr uint8_t kPermutation[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23,
                                      26, 5, 18, 31, 10, 2,  8,  24, 14, 32, 27,
                                      3,  9, 19, 13, 30, 6,  22, 11, 4,  25};

constexpr uint8_t kChoice2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                                  26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                                  51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};

// The output of S-box i + 1 is bits 4 i + 1 to 4 i + 4 of the word that P permutes.
constexpr uint32_t SubstitutedAndPermuted(uint32_t box, uint32_t value) {
  const uint32_t row = (value >> 4 & 2) | (value & 1);
  const uint32_t column = value >> 1 & 15;
  const uint32_t word = uint32_t{kBoxes[box][16 * row + column]} << (28 - 4 * box);
  uint32_t permuted = 0;
  for (uint32_t source : kPermutation) permuted = permuted << 1 | (word >> (32 - source) & 1);
  return permuted << 1 | permuted >> 31;
}

// The packed round key bits that come from the bits value of one nibble of a half.
constexpr uint32_t ChosenBits(uint32_t half, uint32_t nibble, uint32_t value) {
  uint32_t packed = 0;
  for (uint32_t i = 0; i < 24; ++i) {
    const uint32_t source = kChoice2[24 * half + i] - 28u * half - 1u;  // 0..27
    if (source / 4 != nibble || (value >> (3 - source % 4) & 1) == 0) continue;
    // Each half feeds four S-boxes, which alternate between the odd and the even word; a box has
    // the lower six bits of its byte.
    const uint32_t box = i / 6;
    const uint32_t byte = box / 2;
    const uint32_t bit = 5 - i % 6 + 8 * (1 - byte);
    packed |= 1u << (box % 2 == 0 ? bit + 16 : bit);
  }
  return packed;
}

constexpr DesTables MakeTables() {
  DesTables tables = {};
  tables.index_mask = 0x3F3F3F3F;
  for (uint32_t box = 0; box < 8; ++box) {
    for (uint32_t v = 0; v < 64; ++v) {
      tables.substitution[box / 2 + box % 2 * 4][v] = SubstitutedAndPermuted(box, v);
    }
  }
  for (uint32_t v = 0; v < 16; ++v) {
    tables.key_high[v] = (v >> 3 & 1) << 24 | (v >> 2 & 1) << 16 | (v >> 1 & 1) << 8 | (v & 1);
    tables.key_low[v] = (v >> 1 & 1) << 24 | (v >> 2 & 1) << 16 | (v >> 3 & 1) << 8;
    for (uint32_t half = 0; half < 2; ++half) {
      for (uint32_t nibble = 0; nibble < 7; ++nibble) {
        tables.key_choice[half][nibble][v] = ChosenBits(half, nibble, v);
      }
    }
  }
  return tables;
}

}  // namespace

constinit const DesTables kDesTables = MakeTables();

#if MIROLTA_KERNELS_FOR(X86_64)
namespace {

constexpr DesWideTables MakeWideTables() {
  DesWideTables tables = {};
  for (uint32_t box = 0; box < 8; ++box) {
    for (uint32_t v = 0; v < 64; ++v) {
      const uint32_t half = SubstitutedAndPermuted(box, v);
      const uint32_t odd = half >> 4 | half << 28;
      tables.substitution[box][v] = (uint64_t{half} << 32 | odd) & 0x3F3F3F3F3F3F3F3F;
    }
  }
  return tables;
}

}  // namespace

constinit const DesWideTables kDesWideTables = MakeWideTables();
#endif

}  // namespace mirolta
