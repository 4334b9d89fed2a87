// The AES key expansion with the instructions of ARMv8 (FIPS-197, 5.2). On four equal words a
// round's first instruction is SubWord, since ShiftRows does not change them.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include <bit>

  #include "seam/arm_crypto.h"

namespace mirolta {

namespace {

  #define MIROLTA_AES_STEP MIROLTA_ARM_AES __attribute__((always_inline)) inline

MIROLTA_AES_STEP uint32_t SubstituteWord(uint32_t word) {
  const uint8x16_t words = vreinterpretq_u8_u32(vdupq_n_u32(word));
  return vgetq_lane_u32(vreinterpretq_u32_u8(vaeseq_u8(words, vdupq_n_u8(0))), 0);
}

// The next words, from those kKeyWords before.
template <uint32_t kKeyWords>
MIROLTA_AES_STEP void NextWords(uint32_t (&w)[kKeyWords], uint32_t constant) {
  w[0] ^= std::rotr(SubstituteWord(w[kKeyWords - 1]), 8) ^ constant;
  #pragma GCC unroll 8
  for (uint32_t i = 1; i < kKeyWords; ++i) {
    w[i] ^= kKeyWords == 8 && i == 4 ? SubstituteWord(w[3]) : w[i - 1];
  }
}

template <uint32_t kCount, uint32_t kKeyWords>
MIROLTA_AES_STEP uint32_t* Store(uint32_t* to, const uint32_t (&w)[kKeyWords]) {
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) to[i] = w[i];
  return to + kCount;
}

template <uint32_t kKeyWords>
MIROLTA_AES_STEP void Expand(const uint8_t* key, AesSchedule* schedule) {
  constexpr uint32_t kRounds = kKeyWords + 6;
  constexpr uint32_t kWords = 4 * (kRounds + 1);
  constexpr uint32_t kLastWords = kWords % kKeyWords;  // 0 or 4
  uint32_t w[kKeyWords];
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kKeyWords; ++i) w[i] = LoadLittleEndian32(key + 4 * i);
  uint32_t* to = Store<kKeyWords>(schedule->encryption, w);
  uint32_t constant = 1;
  for (uint32_t i = 1; i < kWords / kKeyWords; ++i) {
    NextWords(w, constant);
    to = Store<kKeyWords>(to, w);
    constant = constant << 1 ^ (constant >> 7) * 0x11B;  // doubled in GF(2^8)
  }
  if constexpr (kLastWords != 0) {
    NextWords(w, constant);
    Store<kLastWords>(to, w);
  }
  const uint32_t* const words = schedule->encryption;
  for (uint32_t round = 0; round <= kRounds; ++round) {
    uint32x4_t round_key = vld1q_u32(words + 4 * (kRounds - round));
    if (round != 0 && round != kRounds) {
      round_key = vreinterpretq_u32_u8(vaesimcq_u8(vreinterpretq_u8_u32(round_key)));
    }
    vst1q_u32(schedule->decryption + 4 * round, round_key);
  }
}

}  // namespace

MIROLTA_ARM_AES void AesExpandArmv8(const uint8_t* key, uint32_t byte_length,
                                    AesSchedule* schedule) {
  schedule->rounds = byte_length / 4 + 6;
  if (byte_length == 16) {
    Expand<4>(key, schedule);
  } else if (byte_length == 24) {
    Expand<6>(key, schedule);
  } else {
    Expand<8>(key, schedule);
  }
}

}  // namespace mirolta

#endif
