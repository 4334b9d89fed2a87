// AES with the VAES instructions on 256-bit registers (FIPS-197, 5.1 and 5.3.5): two blocks a
// register, half of the registers in flight. The others do not hold all round keys, so these are
// broadcast from the schedule in each round.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include "seam/x86_vectors.h"

namespace mirolta {

namespace {

  #define MIROLTA_VAES256_TARGET __attribute__((target("avx2,vaes,aes")))
  #define MIROLTA_VAES256 __attribute__((target("avx2,vaes,aes"), always_inline)) inline

constexpr uint32_t kBlocks = 2;                    // in a register
constexpr uint32_t kGroup = kVectorRegisters / 2;  // registers in flight

MIROLTA_VAES256 __m128i NarrowKey(const uint32_t* words) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

MIROLTA_VAES256 __m256i WideKey(const uint32_t* words) {
  return _mm256_broadcastsi128_si256(NarrowKey(words));
}

template <bool kEncrypt>
MIROLTA_VAES256 __m256i Round(__m256i blocks, __m256i key) {
  return kEncrypt ? _mm256_aesenc_epi128(blocks, key) : _mm256_aesdec_epi128(blocks, key);
}

template <bool kEncrypt>
MIROLTA_VAES256 __m256i LastRound(__m256i blocks, __m256i key) {
  return kEncrypt ? _mm256_aesenclast_epi128(blocks, key) : _mm256_aesdeclast_epi128(blocks, key);
}

template <bool kEncrypt, uint32_t kRounds>
MIROLTA_VAES256 void TransformOne(const uint32_t* words, const uint8_t* in, uint8_t* out) {
  const __m128i plain = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  __m128i block = _mm_xor_si128(plain, NarrowKey(words));
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < kRounds; ++round) {
    const __m128i key = NarrowKey(words + 4 * round);
    block = kEncrypt ? _mm_aesenc_si128(block, key) : _mm_aesdec_si128(block, key);
  }
  const __m128i key = NarrowKey(words + 4 * kRounds);
  block = kEncrypt ? _mm_aesenclast_si128(block, key) : _mm_aesdeclast_si128(block, key);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
}

template <bool kEncrypt, uint32_t kRounds, uint32_t kCount>
MIROLTA_VAES256 void TransformGroup(const uint32_t* words, const uint8_t* in, uint8_t* out) {
  const __m256i first = WideKey(words);
  const __m256i last = WideKey(words + 4 * kRounds);
  __m256i blocks[kCount];
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    const __m256i plain = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + 32 * i));
    blocks[i] = _mm256_xor_si256(plain, first);
  }
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < kRounds; ++round) {
    const __m256i key = WideKey(words + 4 * round);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < kCount; ++i) blocks[i] = Round<kEncrypt>(blocks[i], key);
  }
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 32 * i),
                        LastRound<kEncrypt>(blocks[i], last));
  }
}

template <bool kEncrypt, uint32_t kRounds>
MIROLTA_VAES256 void TransformBy(const uint32_t* words, const uint8_t* in, uint8_t* out,
                                 uint32_t block_count) {
  for (; block_count >= kGroup * kBlocks; block_count -= kGroup * kBlocks) {
    TransformGroup<kEncrypt, kRounds, kGroup>(words, in, out);
    in += kGroup * kBlocks * kAesBlockSize;
    out += kGroup * kBlocks * kAesBlockSize;
  }
  if (block_count >= kGroup / 2 * kBlocks) {
    TransformGroup<kEncrypt, kRounds, kGroup / 2>(words, in, out);
    in += kGroup / 2 * kBlocks * kAesBlockSize;
    out += kGroup / 2 * kBlocks * kAesBlockSize;
    block_count -= kGroup / 2 * kBlocks;
  }
  if (kGroup / 2 > 2 && block_count >= 2 * kBlocks) {
    TransformGroup<kEncrypt, kRounds, 2>(words, in, out);
    in += 2 * kBlocks * kAesBlockSize;
    out += 2 * kBlocks * kAesBlockSize;
    block_count -= 2 * kBlocks;
  }
  if (block_count >= kBlocks) {
    TransformGroup<kEncrypt, kRounds, 1>(words, in, out);
    in += kBlocks * kAesBlockSize;
    out += kBlocks * kAesBlockSize;
    block_count -= kBlocks;
  }
  if (block_count != 0) TransformOne<kEncrypt, kRounds>(words, in, out);
}

template <bool kEncrypt>
MIROLTA_VAES256 void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
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

MIROLTA_VAES256_TARGET void AesEncryptVaes256(const AesSchedule& schedule, const uint8_t* in,
                                              uint8_t* out, uint32_t block_count) {
  TransformBlocks<true>(schedule.encryption, schedule.rounds, in, out, block_count);
}

MIROLTA_VAES256_TARGET void AesDecryptVaes256(const AesSchedule& schedule, const uint8_t* in,
                                              uint8_t* out, uint32_t block_count) {
  TransformBlocks<false>(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
