// AES with the instructions of ARMv8 (FIPS-197, 5.1 and 5.3.5). Groups of eight blocks are in
// flight, and the keys of the last ten rounds stay in registers. Those that longer keys have before
// them are read for each group: with them the compiler runs out of registers, and keys on the stack
// are not wiped.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include "seam/arm_crypto.h"

namespace mirolta {

namespace {

  #define MIROLTA_AES_STEP MIROLTA_ARM_AES __attribute__((always_inline)) inline

constexpr uint32_t kLanes = 8;

// The round keys of the last ten rounds and the one added at the end; the words of the schedule, from
// `words` to `fixed`, have those of the rounds that longer keys have at the beginning.
struct RoundKeys {
  const uint32_t* words;
  const uint32_t* fixed;
  uint8x16_t last[11];
};

MIROLTA_AES_STEP uint8x16_t Key(const uint32_t* words) {
  return vreinterpretq_u8_u32(vld1q_u32(words));
}

MIROLTA_AES_STEP void LoadKeys(RoundKeys& keys, const uint32_t* words, uint32_t rounds) {
  keys.words = words;
  keys.fixed = words + 4 * (rounds - 10);
  #pragma GCC unroll 11
  for (uint32_t i = 0; i < 11; ++i) keys.last[i] = Key(keys.fixed + 4 * i);
}

// Adds the key, and then does all of a round but adding its key, which the next one does.
template <bool kEncrypt>
MIROLTA_AES_STEP uint8x16_t Round(uint8x16_t block, uint8x16_t key) {
  return kEncrypt ? vaesmcq_u8(vaeseq_u8(block, key)) : vaesimcq_u8(vaesdq_u8(block, key));
}

template <bool kEncrypt>
MIROLTA_AES_STEP uint8x16_t LastRound(uint8x16_t block, uint8x16_t key) {
  return kEncrypt ? vaeseq_u8(block, key) : vaesdq_u8(block, key);
}

template <bool kEncrypt, uint32_t kCount>
MIROLTA_AES_STEP void RoundOfAll(uint8x16_t (&block)[kCount], uint8x16_t key) {
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) block[i] = Round<kEncrypt>(block[i], key);
}

template <bool kEncrypt, uint32_t kCount>
MIROLTA_AES_STEP void TransformGroup(const RoundKeys& keys, const uint8_t* in, uint8_t* out) {
  uint8x16_t block[kCount];
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) block[i] = vld1q_u8(in + kAesBlockSize * i);
  for (const uint32_t* key = keys.words; key != keys.fixed; key += 4) {
    RoundOfAll<kEncrypt>(block, Key(key));
  }
  #pragma GCC unroll 9
  for (uint32_t round = 0; round < 9; ++round) RoundOfAll<kEncrypt>(block, keys.last[round]);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    block[i] = veorq_u8(LastRound<kEncrypt>(block[i], keys.last[9]), keys.last[10]);
    vst1q_u8(out + kAesBlockSize * i, block[i]);
  }
}

// A block alone, without keeping the keys.
template <bool kEncrypt>
MIROLTA_AES_STEP void TransformOne(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                   uint8_t* out) {
  uint8x16_t block = vld1q_u8(in);
  const uint32_t* const fixed = words + 4 * (rounds - 10);
  for (; words != fixed; words += 4) block = Round<kEncrypt>(block, Key(words));
  #pragma GCC unroll 9
  for (uint32_t round = 0; round < 9; ++round) {
    block = Round<kEncrypt>(block, Key(fixed + 4 * round));
  }
  block = LastRound<kEncrypt>(block, Key(fixed + 36));
  vst1q_u8(out, veorq_u8(block, Key(fixed + 40)));
}

template <bool kEncrypt>
MIROLTA_AES_STEP void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                      uint8_t* out, uint32_t block_count) {
  if (block_count >= 4) {
    RoundKeys keys;
    LoadKeys(keys, words, rounds);
    for (; block_count >= kLanes; block_count -= kLanes) {
      TransformGroup<kEncrypt, kLanes>(keys, in, out);
      in += kLanes * kAesBlockSize;
      out += kLanes * kAesBlockSize;
    }
    if (block_count >= 4) {
      TransformGroup<kEncrypt, 4>(keys, in, out);
      in += 4 * kAesBlockSize;
      out += 4 * kAesBlockSize;
      block_count -= 4;
    }
  }
  for (; block_count != 0; --block_count) {
    TransformOne<kEncrypt>(words, rounds, in, out);
    in += kAesBlockSize;
    out += kAesBlockSize;
  }
}

}  // namespace

MIROLTA_ARM_AES void AesEncryptArmv8(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                                     uint32_t block_count) {
  TransformBlocks<true>(schedule.encryption, schedule.rounds, in, out, block_count);
}

MIROLTA_ARM_AES void AesDecryptArmv8(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                                     uint32_t block_count) {
  TransformBlocks<false>(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
