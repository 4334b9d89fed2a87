// SHA-1 with the SHA extensions (FIPS 180-2, 6.1.2).
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include <utility>

  #include "finish_in_memory.h"
  #include "sha_padding_x86.h"
  #include "unrolled_step.h"

  #define MIROLTA_SHA_TARGET __attribute__((target("sse4.1,sha")))

namespace mirolta {

namespace {

// Four rounds, with the words w[kQuad % 4]. On entry e holds the value that becomes e when rotated,
// the a of four rounds before; in the first quad it is e itself.
template <int kQuad>
MIROLTA_SHA_TARGET MIROLTA_STEP void Quad(__m128i& abcd, __m128i& e, __m128i (&w)[4]) {
  __m128i& word = w[kQuad % 4];
  if constexpr (kQuad >= 4) {
    word = _mm_sha1msg1_epu32(word, w[(kQuad + 1) % 4]);
    word = _mm_xor_si128(word, w[(kQuad + 2) % 4]);
    word = _mm_sha1msg2_epu32(word, w[(kQuad + 3) % 4]);
  }
  const __m128i sum = kQuad == 0 ? _mm_add_epi32(e, word) : _mm_sha1nexte_epu32(e, word);
  e = abcd;
  abcd = _mm_sha1rnds4_epu32(abcd, sum, kQuad / 5);
}

template <int... kQuads>
MIROLTA_SHA_TARGET MIROLTA_STEP void Quads(__m128i& abcd, __m128i& e, __m128i (&w)[4],
                                           std::integer_sequence<int, kQuads...>) {
  (Quad<kQuads>(abcd, e, w), ...);
}

// As the instructions take it: a is the highest word of abcd, and e is the highest word of its own.
struct State {
  __m128i abcd;
  __m128i e;
};

MIROLTA_SHA_TARGET MIROLTA_STEP __m128i SwapBytesMask() {
  return _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
}

MIROLTA_SHA_TARGET MIROLTA_STEP State LoadState(const uint32_t* state) {
  const __m128i* const words = reinterpret_cast<const __m128i*>(state);
  return {_mm_shuffle_epi32(_mm_loadu_si128(words), 0x1B),
          _mm_insert_epi32(_mm_setzero_si128(), static_cast<int>(state[4]), 3)};
}

MIROLTA_SHA_TARGET MIROLTA_STEP void StoreState(const State& s, uint32_t* state) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(s.abcd, 0x1B));
  state[4] = static_cast<uint32_t>(_mm_extract_epi32(s.e, 3));
}

MIROLTA_SHA_TARGET MIROLTA_STEP void Absorb(State& s, __m128i (&w)[4]) {
  State before = s;
  #if MIROLTA_KERNELS_FOR(X86_32)
  // The copies are in memory, but the state itself stays in registers from block to block.
  __asm__("" : "+m"(before.abcd), "+m"(before.e));
  #endif
  Quads(s.abcd, s.e, w, std::make_integer_sequence<int, 20>());
  s.e = _mm_sha1nexte_epu32(s.e, before.e);
  s.abcd = _mm_add_epi32(s.abcd, before.abcd);
}

}  // namespace

MIROLTA_SHA_TARGET void Sha1ShaNi(uint32_t* state, const uint8_t* blocks, size_t block_count) {
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
  StoreState(s, state);
}

MIROLTA_SHA_TARGET void Sha1ShaNiFinish(uint32_t* state, uint8_t* block, uint32_t waiting,
                                        uint64_t bit_count, uint8_t* digest) {
  if (waiting >= kHashLengthOffset) {
    FinishInMemory<Sha1ShaNi, 5, true>(state, block, waiting, bit_count, digest);
    return;
  }
  const __m128i swap_bytes = SwapBytesMask();
  State s = LoadState(state);
  __m128i w[4];
  for (int i = 0; i < 4; ++i) w[i] = PaddedQuarter(block, waiting, i, swap_bytes);
  w[3] = _mm_or_si128(w[3], _mm_set_epi64x(0, static_cast<int64_t>(bit_count)));
  Absorb(s, w);
  StoreState(s, state);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(digest), _mm_shuffle_epi8(s.abcd, swap_bytes));
  StoreBigEndian32(digest + 16, static_cast<uint32_t>(_mm_extract_epi32(s.e, 3)));
}

}  // namespace mirolta

#endif
