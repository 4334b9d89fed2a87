// The AES key expansion with the AES-NI instructions (FIPS-197, 5.2). On four equal words the last
// round's instruction is SubWord, since ShiftRows does not change them.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AES_EXPAND __attribute__((target("sse4.1,aes"), always_inline)) inline

constexpr int kUnrolledSteps = 10;  // all

MIROLTA_AES_EXPAND void Store(uint32_t* words, __m128i key) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(words), key);
}

// Stores a round key in both schedules.
template <uint32_t kRounds>
MIROLTA_AES_EXPAND void StoreRound(AesSchedule* schedule, uint32_t round, __m128i key) {
  Store(schedule->encryption + 4 * round, key);
  const bool outer = round == 0 || round == kRounds;
  Store(schedule->decryption + 4 * (kRounds - round), outer ? key : _mm_aesimc_si128(key));
}

// SubWord(RotWord(word kWord of key)) xor constant, in all words.
template <int kWord>
MIROLTA_AES_EXPAND __m128i SubstituteRotated(__m128i key, __m128i constant) {
  constexpr int kFirst = 4 * kWord;
  const __m128i spread =
      _mm_set1_epi32(kFirst << 24 | (kFirst + 3) << 16 | (kFirst + 2) << 8 | (kFirst + 1));
  return _mm_aesenclast_si128(_mm_shuffle_epi8(key, spread), constant);
}

MIROLTA_AES_EXPAND __m128i SubstituteLast(__m128i key) {
  return _mm_aesenclast_si128(_mm_shuffle_epi32(key, 0xFF), _mm_setzero_si128());
}

  #include "aes_expand_vectors.inc"

}  // namespace

__attribute__((target("sse4.1,aes"))) void AesExpandAesNi(const uint8_t* key, uint32_t byte_length,
                                                          AesSchedule* schedule) {
  Expand(key, byte_length, schedule);
}

}  // namespace mirolta

#endif
