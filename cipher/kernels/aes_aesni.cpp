// AES with the AES-NI instructions (FIPS-197, 5.1 and 5.3.5). Twelve blocks are in flight, or six where there
// are eight registers, of which two take keys: a round instruction takes several cycles, and one or two of other
// blocks can start in each cycle.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include "seam/x86_vectors.h"

namespace mirolta {

namespace {

  #define MIROLTA_AESNI __attribute__((target("sse4.1,aes"), always_inline)) inline

constexpr uint32_t kLanes = kVectorRegisters > 12 ? 12 : 6;

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

// One loop for all key sizes: with kCount blocks a round, loop overhead is negligible.
template <bool kEncrypt, uint32_t kCount>
MIROLTA_AESNI void TransformGroup(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                  uint8_t* out) {
  const __m128i first = Key(words);
  __m128i block[kCount];
  #pragma GCC unroll 16
  for (uint32_t i = 0; i < kCount; ++i) {
    block[i] = _mm_xor_si128(Load(in + kAesBlockSize * i), first);
  }
  for (const uint32_t* const last = words + 4 * rounds; (words += 4) != last;) {
    const __m128i key = Key(words);
  #pragma GCC unroll 16
    for (uint32_t i = 0; i < kCount; ++i) block[i] = Round<kEncrypt>(block[i], key);
  }
  const __m128i key = Key(words);
  #pragma GCC unroll 16
  for (uint32_t i = 0; i < kCount; ++i) {
    Store(out + kAesBlockSize * i, LastRound<kEncrypt>(block[i], key));
  }
}

// Nine rounds; none, two or four more by key size; and the last.
template <bool kEncrypt>
MIROLTA_AESNI void TransformOne(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                uint8_t* out) {
  __m128i block = _mm_xor_si128(Load(in), Key(words));
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < 10; ++round) {
    block = Round<kEncrypt>(block, Key(words + 4 * round));
  }
  if (rounds != 10) {
    block = Round<kEncrypt>(block, Key(words + 40));
    block = Round<kEncrypt>(block, Key(words + 44));
    if (rounds != 12) {
      block = Round<kEncrypt>(block, Key(words + 48));
      block = Round<kEncrypt>(block, Key(words + 52));
    }
  }
  Store(out, LastRound<kEncrypt>(block, Key(words + 4 * rounds)));
}

template <bool kEncrypt>
MIROLTA_AESNI void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                   uint8_t* out, uint32_t block_count) {
  if (block_count == 1) {
    TransformOne<kEncrypt>(words, rounds, in, out);
    return;
  }
  for (; block_count >= kLanes; block_count -= kLanes) {
    TransformGroup<kEncrypt, kLanes>(words, rounds, in, out);
    in += kLanes * kAesBlockSize;
    out += kLanes * kAesBlockSize;
  }
  for (; block_count >= 4; block_count -= 4) {
    TransformGroup<kEncrypt, 4>(words, rounds, in, out);
    in += 4 * kAesBlockSize;
    out += 4 * kAesBlockSize;
  }
  for (; block_count != 0; --block_count) {
    TransformOne<kEncrypt>(words, rounds, in, out);
    in += kAesBlockSize;
    out += kAesBlockSize;
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
