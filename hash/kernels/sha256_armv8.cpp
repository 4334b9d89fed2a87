// SHA-256 with the instructions of ARMv8 (FIPS 180-2, 6.2.2).
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include <utility>

  #include "finish_in_memory.h"
  #include "seam/arm_crypto.h"
  #include "sha256_constants.h"
  #include "unrolled_step.h"

namespace mirolta {

namespace {

struct State {
  uint32x4_t abcd;
  uint32x4_t efgh;
};

// The words w[kQuad % 4] are replaced by those of 16 rounds later, where there are such rounds.
template <int kQuad>
MIROLTA_ARM_SHA MIROLTA_STEP void Quad(State& s, uint32x4_t (&w)[4],
                                       const uint32x4_t (&constants)[16]) {
  uint32x4_t& word = w[kQuad % 4];
  const uint32x4_t sum = vaddq_u32(word, constants[kQuad]);
  const uint32x4_t abcd = s.abcd;
  s.abcd = vsha256hq_u32(abcd, s.efgh, sum);
  s.efgh = vsha256h2q_u32(s.efgh, abcd, sum);
  if constexpr (kQuad < 12) {
    word = vsha256su0q_u32(word, w[(kQuad + 1) % 4]);
    word = vsha256su1q_u32(word, w[(kQuad + 2) % 4], w[(kQuad + 3) % 4]);
  }
}

template <int... kQuads>
MIROLTA_ARM_SHA MIROLTA_STEP void Quads(State& s, uint32x4_t (&w)[4],
                                        const uint32x4_t (&constants)[16],
                                        std::integer_sequence<int, kQuads...>) {
  (Quad<kQuads>(s, w, constants), ...);
}

}  // namespace

MIROLTA_ARM_SHA void Sha256Armv8(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  // All in registers, loaded in pairs: as constants each would need an address of its own.
  const uint32_t* words = kSha256Constants;
  __asm__("" : "+r"(words));
  uint32x4_t constants[16];
  #pragma GCC unroll 16
  for (int i = 0; i < 16; ++i) constants[i] = vld1q_u32(words + 4 * i);
  State s = {vld1q_u32(state), vld1q_u32(state + 4)};
  for (; block_count != 0; --block_count, blocks += kHashBlockSize) {
    const State before = s;
    uint32x4_t w[4];
  #pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      w[i] = vreinterpretq_u32_u8(vrev32q_u8(vld1q_u8(blocks + 16 * i)));
    }
    Quads(s, w, constants, std::make_integer_sequence<int, 16>());
    s.abcd = vaddq_u32(s.abcd, before.abcd);
    s.efgh = vaddq_u32(s.efgh, before.efgh);
  }
  vst1q_u32(state, s.abcd);
  vst1q_u32(state + 4, s.efgh);
}

void Sha256Armv8Finish(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                       uint8_t* digest) {
  FinishInMemory<Sha256Armv8, 8, true>(state, block, waiting, bit_count, digest);
}

}  // namespace mirolta

#endif
