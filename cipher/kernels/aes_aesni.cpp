// AES with the processor's round instructions, eight blocks in flight: a round takes several cycles
// but the next one of another block can start in each of them.
#include "aes_kernels.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AESNI __attribute__((target("sse4.1,aes"), always_inline)) inline

constexpr uint32_t kLanes = 8;

MIROLTA_AESNI __m128i Load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

MIROLTA_AESNI void Store(uint8_t* bytes, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block);
}

MIROLTA_AESNI __m128i Key(const uint32_t* words) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

template <bool kEncrypt>
MIROLTA_AESNI __m128i Round(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenc_si128(block, key) : _mm_aesdec_si128(block, key);
}

template <bool kEncrypt>
MIROLTA_AESNI __m128i LastRound(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenclast_si128(block, key) : _mm_aesdeclast_si128(block, key);
}

template <bool kEncrypt, uint32_t kRounds, uint32_t kCount>
MIROLTA_AESNI void TransformGroup(const uint32_t* words, const uint8_t* in, uint8_t* out) {
  const __m128i first = Key(words);
  const __m128i last = Key(words + 4 * kRounds);
  __m128i block[kCount];
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    block[i] = _mm_xor_si128(Load(in + kAesBlockSize * i), first);
  }
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < kRounds; ++round) {
    const __m128i key = Key(words + 4 * round);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < kCount; ++i) block[i] = Round<kEncrypt>(block[i], key);
  }
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    Store(out + kAesBlockSize * i, LastRound<kEncrypt>(block[i], last));
  }
}

template <bool kEncrypt, uint32_t kRounds>
MIROLTA_AESNI void TransformBy(const uint32_t* words, const uint8_t* in, uint8_t* out,
                               uint32_t block_count) {
  for (; block_count >= kLanes; block_count -= kLanes) {
    TransformGroup<kEncrypt, kRounds, kLanes>(words, in, out);
    in += kLanes * kAesBlockSize;
    out += kLanes * kAesBlockSize;
  }
  if ((block_count & 4) != 0) {
    TransformGroup<kEncrypt, kRounds, 4>(words, in, out);
    in += 4 * kAesBlockSize;
    out += 4 * kAesBlockSize;
  }
  if ((block_count & 2) != 0) {
    TransformGroup<kEncrypt, kRounds, 2>(words, in, out);
    in += 2 * kAesBlockSize;
    out += 2 * kAesBlockSize;
  }
  if ((block_count & 1) != 0) TransformGroup<kEncrypt, kRounds, 1>(words, in, out);
}

template <bool kEncrypt>
MIROLTA_AESNI void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                   uint8_t* out, uint32_t block_count) {
  if (rounds == 10) {
    TransformBy<kEncrypt, 10>(words, in, out, block_count);
  } else if (rounds == 12) {
    TransformBy<kEncrypt, 12>(words, in, out, block_count);
  } else {
    TransformBy<kEncrypt, 14>(words, in, out, block_count);
  }
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
