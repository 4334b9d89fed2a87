// The AES key expansion with the AES-NI instructions (FIPS-197, 5.2). On four equal words the last
// round's instruction is SubWord, since ShiftRows does not change them.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AESNI_EXPAND __attribute__((target("sse4.1,aes"), always_inline)) inline

MIROLTA_AESNI_EXPAND void Store(uint32_t* words, __m128i key) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(words), key);
}

// Stores a round key in both schedules.
template <uint32_t kRounds>
MIROLTA_AESNI_EXPAND void StoreRound(AesSchedule* schedule, uint32_t round, __m128i key) {
  Store(schedule->encryption + 4 * round, key);
  const bool outer = round == 0 || round == kRounds;
  Store(schedule->decryption + 4 * (kRounds - round), outer ? key : _mm_aesimc_si128(key));
}

// Each word becomes the xor of itself and all words before it.
MIROLTA_AESNI_EXPAND __m128i Accumulate(__m128i key) {
  key = _mm_xor_si128(key, _mm_slli_si128(key, 4));
  return _mm_xor_si128(key, _mm_slli_si128(key, 8));
}

// SubWord(RotWord(word kWord of key)) xor constant, in all words.
template <int kWord>
MIROLTA_AESNI_EXPAND __m128i SubstituteRotated(__m128i key, __m128i constant) {
  constexpr int kFirst = 4 * kWord;
  const __m128i spread =
      _mm_set1_epi32(kFirst << 24 | (kFirst + 3) << 16 | (kFirst + 2) << 8 | (kFirst + 1));
  return _mm_aesenclast_si128(_mm_shuffle_epi8(key, spread), constant);
}

// Round constant i, counted from 0, in the lowest byte of each word.
MIROLTA_AESNI_EXPAND __m128i RoundConstant(uint32_t i) {
  return _mm_set1_epi32(i < 8 ? 1 << i : 0x1B << (i - 8));
}

MIROLTA_AESNI_EXPAND void Expand128(const uint8_t* bytes, AesSchedule* schedule) {
  __m128i key = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  StoreRound<10>(schedule, 0, key);
  #pragma GCC unroll 10
  for (uint32_t round = 1; round <= 10; ++round) {
    const __m128i word = SubstituteRotated<3>(key, RoundConstant(round - 1));
    key = _mm_xor_si128(Accumulate(key), word);
    StoreRound<10>(schedule, round, key);
  }
}

MIROLTA_AESNI_EXPAND void Expand256(const uint8_t* bytes, AesSchedule* schedule) {
  __m128i even = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  __m128i odd = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16));
  StoreRound<14>(schedule, 0, even);
  StoreRound<14>(schedule, 1, odd);
  #pragma GCC unroll 7
  for (uint32_t i = 0; i < 7; ++i) {
    even = _mm_xor_si128(Accumulate(even), SubstituteRotated<3>(odd, RoundConstant(i)));
    StoreRound<14>(schedule, 2 * i + 2, even);
    if (i == 6) break;
    const __m128i spread = _mm_shuffle_epi32(even, 0xFF);
    odd = _mm_xor_si128(Accumulate(odd), _mm_aesenclast_si128(spread, _mm_setzero_si128()));
    StoreRound<14>(schedule, 2 * i + 3, odd);
  }
}

// Two steps of six words make three round keys: the last two words of the step before with the
// first two of this one, this one's other four, and the first four of the next step.
MIROLTA_AESNI_EXPAND void Expand192(const uint8_t* bytes, AesSchedule* schedule) {
  __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  __m128i rest = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + 16));
  StoreRound<12>(schedule, 0, first);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < 8; ++i) {
    const __m128i before = rest;
    first = _mm_xor_si128(Accumulate(first), SubstituteRotated<1>(rest, RoundConstant(i)));
    rest = _mm_xor_si128(rest, _mm_slli_si128(rest, 4));
    rest = _mm_move_epi64(_mm_xor_si128(rest, _mm_shuffle_epi32(first, 0xFF)));
    const uint32_t round = 1 + i / 2 * 3;
    if (i % 2 == 0) {
      StoreRound<12>(schedule, round, _mm_unpacklo_epi64(before, first));
      StoreRound<12>(schedule, round + 1, _mm_unpacklo_epi64(_mm_srli_si128(first, 8), rest));
    } else {
      StoreRound<12>(schedule, round + 2, first);
    }
  }
}

}  // namespace

__attribute__((target("sse4.1,aes"))) void AesExpandAesNi(const uint8_t* key, uint32_t byte_length,
                                                          AesSchedule* schedule) {
  schedule->rounds = byte_length / 4 + 6;
  if (byte_length == 16) {
    Expand128(key, schedule);
  } else if (byte_length == 24) {
    Expand192(key, schedule);
  } else {
    Expand256(key, schedule);
  }
}

}  // namespace mirolta

#endif
