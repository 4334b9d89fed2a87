// The last block of a SHA message, padded in registers: gathering it in memory from pieces would
// stall wide loads until the pieces are stored.
#pragma once

#include <immintrin.h>

#include "unrolled_step.h"

namespace mirolta {

// Read from offset 64 - waiting: the mask of the message's bytes in a block, and the padding.
struct ShaPadding {
  uint8_t keep[128];
  uint8_t pad[128];
};
inline constexpr ShaPadding kShaPadding = [] {
  ShaPadding padding = {};
  for (int i = 0; i < 64; ++i) padding.keep[i] = 0xFF;
  padding.pad[64] = 0x80;
  return padding;
}();

__attribute__((target("sse4.1"))) MIROLTA_STEP __m128i LoadBytes(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// Returns a quarter of the padded block, shuffled by swap; the length is zero.
// Shapes: block[64]; waiting < 56; quarter < 4.
__attribute__((target("sse4.1"))) MIROLTA_STEP __m128i PaddedQuarter(const uint8_t* block,
                                                                     uint32_t waiting, int quarter,
                                                                     __m128i swap) {
  const uint32_t offset = 64 - waiting + 16 * static_cast<uint32_t>(quarter);
  const __m128i kept =
      _mm_and_si128(LoadBytes(block + 16 * quarter), LoadBytes(kShaPadding.keep + offset));
  return _mm_shuffle_epi8(_mm_or_si128(kept, LoadBytes(kShaPadding.pad + offset)), swap);
}

}  // namespace mirolta
