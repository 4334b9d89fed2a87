// SHA-256 with the SHA extensions (FIPS 180-2, 6.2.2).
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include <utility>

  #include "finish_in_memory.h"
  #include "sha256_constants.h"
  #include "sha_padding_x86.h"
  #include "unrolled_step.h"

  #define MIROLTA_SHA_TARGET __attribute__((target("sse4.1,sha")))

namespace mirolta {

namespace {

// Four rounds, with the words w[kQuad % 4], which the message schedule first moves on by 16 rounds.
template <int kQuad>
MIROLTA_SHA_TARGET MIROLTA_STEP void Quad(__m128i& abef, __m128i& cdgh, __m128i (&w)[4]) {
  __m128i& word = w[kQuad % 4];
  if constexpr (kQuad >= 4) {
    // word is 16 rounds back; the others are 12, 8 and 4 rounds back.
    const __m128i& back3 = w[(kQuad + 1) % 4];
    const __m128i& back2 = w[(kQuad + 2) % 4];
    const __m128i& back1 = w[(kQuad + 3) % 4];
    word = _mm_sha256msg1_epu32(word, back3);
    word = _mm_add_epi32(word, _mm_alignr_epi8(back1, back2, 4));
    word = _mm_sha256msg2_epu32(word, back1);
  }
  const __m128i* constants = reinterpret_cast<const __m128i*>(kSha256Constants) + kQuad;
  const __m128i sum = _mm_add_epi32(word, _mm_load_si128(constants));
  cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
  abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sum, 0x0E));
}

template <int... kQuads>
MIROLTA_SHA_TARGET MIROLTA_STEP void Quads(__m128i& abef, __m128i& cdgh, __m128i (&w)[4],
                                           std::integer_sequence<int, kQuads...>) {
  (Quad<kQuads>(abef, cdgh, w), ...);
}

// As the instructions take it: a and c are the highest words.
struct State {
  __m128i abef;
  __m128i cdgh;
};

MIROLTA_SHA_TARGET MIROLTA_STEP __m128i SwapBytesMask() {
  return _mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203);
}

MIROLTA_SHA_TARGET MIROLTA_STEP State LoadState(const uint32_t* state) {
  const __m128i* const words = reinterpret_cast<const __m128i*>(state);
  const __m128i cdab = _mm_shuffle_epi32(_mm_loadu_si128(words), 0xB1);
  const __m128i efgh = _mm_shuffle_epi32(_mm_loadu_si128(words + 1), 0x1B);
  return {_mm_alignr_epi8(cdab, efgh, 8), _mm_blend_epi16(efgh, cdab, 0xF0)};
}

// The words in order, a and e lowest.
MIROLTA_SHA_TARGET MIROLTA_STEP void Unpack(const State& s, __m128i* dcba, __m128i* hgfe) {
  const __m128i feba = _mm_shuffle_epi32(s.abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(s.cdgh, 0xB1);
  *dcba = _mm_blend_epi16(feba, dchg, 0xF0);
  *hgfe = _mm_alignr_epi8(dchg, feba, 8);
}

MIROLTA_SHA_TARGET MIROLTA_STEP void Absorb(State& s, __m128i (&w)[4]) {
  State before = s;
  #if MIROLTA_KERNELS_FOR(X86_32)
  // The copies are in memory, but the state itself stays in registers from block to block.
  __asm__("" : "+m"(before.abef), "+m"(before.cdgh));
  #endif
  Quads(s.abef, s.cdgh, w, std::make_integer_sequence<int, 16>());
  s.abef = _mm_add_epi32(s.abef, before.abef);
  s.cdgh = _mm_add_epi32(s.cdgh, before.cdgh);
}

MIROLTA_SHA_TARGET MIROLTA_STEP void AbsorbLast(State& s, const uint8_t* block, uint32_t waiting,
                                                uint64_t bit_count) {
  const __m128i swap_bytes = SwapBytesMask();
  __m128i w[4];
  for (int i = 0; i < 4; ++i) w[i] = PaddedQuarter(block, waiting, i, swap_bytes);
  // The length is big-endian: its high word comes first.
  const uint64_t words = bit_count << 32 | bit_count >> 32;
  w[3] = _mm_or_si128(w[3], _mm_set_epi64x(static_cast<int64_t>(words), 0));
  Absorb(s, w);
}

MIROLTA_SHA_TARGET MIROLTA_STEP void StoreState(__m128i dcba, __m128i hgfe, uint32_t* state) {
  __m128i* const words = reinterpret_cast<__m128i*>(state);
  _mm_storeu_si128(words, dcba);
  _mm_storeu_si128(words + 1, hgfe);
}

MIROLTA_SHA_TARGET MIROLTA_STEP void StoreResults(const State& s, uint32_t* state,
                                                  uint8_t* digest) {
  const __m128i swap_bytes = SwapBytesMask();
  __m128i dcba, hgfe;
  Unpack(s, &dcba, &hgfe);
  StoreState(dcba, hgfe, state);
  __m128i* const out = reinterpret_cast<__m128i*>(digest);
  _mm_storeu_si128(out, _mm_shuffle_epi8(dcba, swap_bytes));
  _mm_storeu_si128(out + 1, _mm_shuffle_epi8(hgfe, swap_bytes));
}

}  // namespace

MIROLTA_SHA_TARGET void Sha256ShaNi(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  const __m128i swap_bytes = SwapBytesMask();
  State s = LoadState(state);
  for (; block_count != 0; --block_count, blocks += kHashBlockSize) {
    __m128i w[4];
    for (int i = 0; i < 4; ++i) {
      const __m128i* quarter = reinterpret_cast<const __m128i*>(blocks) + i;
      w[i] = _mm_shuffle_epi8(_mm_loadu_si128(quarter), swap_bytes);
    }
    Absorb(s, w);
  }
  __m128i dcba, hgfe;
  Unpack(s, &dcba, &hgfe);
  StoreState(dcba, hgfe, state);
}

MIROLTA_SHA_TARGET void Sha256ShaNiFinish(uint32_t* state, uint8_t* block, uint32_t waiting,
                                          uint64_t bit_count, uint8_t* digest) {
  if (waiting >= kHashLengthOffset) {
    FinishInMemory<Sha256ShaNi, 8, true>(state, block, waiting, bit_count, digest);
    return;
  }
  State s = LoadState(state);
  AbsorbLast(s, block, waiting, bit_count);
  StoreResults(s, state, digest);
}

MIROLTA_SHA_TARGET void Sha256ShaNiFinishKeyed(uint32_t* state, const uint32_t* outer,
                                               uint8_t* block, uint32_t waiting, uint64_t bit_count,
                                               uint8_t* digest) {
  State s = LoadState(state);
  AbsorbLast(s, block, waiting, bit_count);
  // The outer message is the outer pad, 64 bytes, and the inner digest, 32 bytes. The digest stays
  // in registers.
  constexpr int kOuterBits = 8 * (64 + 32);
  __m128i w[4];
  Unpack(s, &w[0], &w[1]);
  w[2] = _mm_setr_epi32(INT32_MIN, 0, 0, 0);
  w[3] = _mm_setr_epi32(0, 0, 0, kOuterBits);
  s = LoadState(outer);
  Absorb(s, w);
  StoreResults(s, state, digest);
}

}  // namespace mirolta

#endif
