// AES with the processor's round instructions, eight blocks in flight: a round takes several cycles
// but the next one of another block can start in each of them.
#include "aes_kernels.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AESNI __attribute__((target("sse4.1,aes"), always_inline)) inline

constexpr uint32_t kLanes = 8;

struct RoundKeys {
  __m128i key[kAesMaxRounds + 1];
};

MIROLTA_AESNI __m128i Load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

MIROLTA_AESNI void Store(uint8_t* bytes, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block);
}

// The schedule's words have the first row in the top byte, the instructions want it in the lowest.
MIROLTA_AESNI void LoadKeys(const uint32_t* words, uint32_t rounds, RoundKeys* keys) {
  const __m128i swap = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
  for (uint32_t round = 0; round <= rounds; ++round) {
    const __m128i key = _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + 4 * round));
    keys->key[round] = _mm_shuffle_epi8(key, swap);
  }
}

template <bool kEncrypt>
MIROLTA_AESNI __m128i Round(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenc_si128(block, key) : _mm_aesdec_si128(block, key);
}

template <bool kEncrypt>
MIROLTA_AESNI __m128i LastRound(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenclast_si128(block, key) : _mm_aesdeclast_si128(block, key);
}

template <bool kEncrypt, uint32_t kCount>
MIROLTA_AESNI void TransformGroup(const RoundKeys& keys, uint32_t rounds, const uint8_t* in,
                                  uint8_t* out) {
  __m128i block[kCount];
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    block[i] = _mm_xor_si128(Load(in + kAesBlockSize * i), keys.key[0]);
  }
  for (uint32_t round = 1; round < rounds; ++round) {
    const __m128i key = keys.key[round];
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < kCount; ++i) block[i] = Round<kEncrypt>(block[i], key);
  }
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    Store(out + kAesBlockSize * i, LastRound<kEncrypt>(block[i], keys.key[rounds]));
  }
}

template <bool kEncrypt>
MIROLTA_AESNI void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                   uint8_t* out, uint32_t block_count) {
  RoundKeys keys;
  LoadKeys(words, rounds, &keys);
  for (; block_count >= kLanes; block_count -= kLanes) {
    TransformGroup<kEncrypt, kLanes>(keys, rounds, in, out);
    in += kLanes * kAesBlockSize;
    out += kLanes * kAesBlockSize;
  }
  for (; block_count != 0; --block_count) {
    TransformGroup<kEncrypt, 1>(keys, rounds, in, out);
    in += kAesBlockSize;
    out += kAesBlockSize;
  }
  WipeMemory(&keys, sizeof keys);
}

}  // namespace

__attribute__((target("sse4.1,aes"))) void AesEncryptAesNi(const AesSchedule& schedule,
                                                           const uint8_t* in, uint8_t* out,
                                                           uint32_t block_count) {
  TransformBlocks<true>(schedule.encryption, schedule.rounds, in, out, block_count);
}

__attribute__((target("sse4.1,aes"))) void AesDecryptAesNi(const AesSchedule& schedule,
                                                           const uint8_t* in, uint8_t* out,
                                                           uint32_t block_count) {
  TransformBlocks<false>(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
