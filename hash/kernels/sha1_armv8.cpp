// SHA-1 with the instructions of ARMv8 (FIPS 180-2, 6.1.2). In assembly, since compilers copy a, b, c
// and d, or e, from register to register.
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include "finish_in_memory.h"
  #include "seam/arm_crypto.h"

namespace mirolta {

namespace {

// clang-format off

// Four rounds on a to d in v0 by the words w: `e` becomes `next`, the rotated a of before. `mix` is the
// function of the rounds, c(hoose), p(arity) or m(ajority), `k` the register of their constants.
  #define MIROLTA_ROUNDS(mix, k, e, next, w)                    \
    "add v5.4s, v" w ".4s, v" k ".4s\n"                         \
    "sha1h s" next ", s0\n"                                     \
    "sha1" mix " q0, s" e ", v5.4s\n"

// The same, and then the words of 16 rounds later in place of w; those after it are in w1 to w3.
  #define MIROLTA_QUAD(mix, k, e, next, w, w1, w2, w3)          \
    MIROLTA_ROUNDS(mix, k, e, next, w)                          \
    "sha1su0 v" w ".4s, v" w1 ".4s, v" w2 ".4s\n"               \
    "sha1su1 v" w ".4s, v" w3 ".4s\n"

// From the chaining value in v3 and, e, v4.
  #define MIROLTA_BLOCK                                         \
    "ld1 {v16.16b-v19.16b}, [%[blocks]], #64\n"                 \
    "rev32 v16.16b, v16.16b\n"                                  \
    "rev32 v17.16b, v17.16b\n"                                  \
    "rev32 v18.16b, v18.16b\n"                                  \
    "rev32 v19.16b, v19.16b\n"                                  \
    "mov v0.16b, v3.16b\n"                                      \
    MIROLTA_QUAD("c", "20", "4", "2", "16", "17", "18", "19")   \
    MIROLTA_QUAD("c", "20", "2", "1", "17", "18", "19", "16")   \
    MIROLTA_QUAD("c", "20", "1", "2", "18", "19", "16", "17")   \
    MIROLTA_QUAD("c", "20", "2", "1", "19", "16", "17", "18")   \
    MIROLTA_QUAD("c", "20", "1", "2", "16", "17", "18", "19")   \
    MIROLTA_QUAD("p", "21", "2", "1", "17", "18", "19", "16")   \
    MIROLTA_QUAD("p", "21", "1", "2", "18", "19", "16", "17")   \
    MIROLTA_QUAD("p", "21", "2", "1", "19", "16", "17", "18")   \
    MIROLTA_QUAD("p", "21", "1", "2", "16", "17", "18", "19")   \
    MIROLTA_QUAD("p", "21", "2", "1", "17", "18", "19", "16")   \
    MIROLTA_QUAD("m", "22", "1", "2", "18", "19", "16", "17")   \
    MIROLTA_QUAD("m", "22", "2", "1", "19", "16", "17", "18")   \
    MIROLTA_QUAD("m", "22", "1", "2", "16", "17", "18", "19")   \
    MIROLTA_QUAD("m", "22", "2", "1", "17", "18", "19", "16")   \
    MIROLTA_QUAD("m", "22", "1", "2", "18", "19", "16", "17")   \
    MIROLTA_QUAD("p", "23", "2", "1", "19", "16", "17", "18")   \
    MIROLTA_ROUNDS("p", "23", "1", "2", "16")                   \
    MIROLTA_ROUNDS("p", "23", "2", "1", "17")                   \
    MIROLTA_ROUNDS("p", "23", "1", "2", "18")                   \
    MIROLTA_ROUNDS("p", "23", "2", "1", "19")                   \
    "add v3.4s, v3.4s, v0.4s\n"                                 \
    "add v4.4s, v4.4s, v1.4s\n"

// clang-format on

constexpr uint32_t kConstants[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

}  // namespace

MIROLTA_ARM_SHA void Sha1Armv8(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  const uint32_t* constants = kConstants;
  __asm__ volatile(
      "ld4r {v20.4s-v23.4s}, [%[constants]]\n"
      "ldr q3, [%[state]]\n"
      "ldr s4, [%[state], #16]\n"
      "cbz %[count], 2f\n"
      "1:\n" MIROLTA_BLOCK
      "sub %[count], %[count], #1\n"
      "cbnz %[count], 1b\n"
      "2:\n"
      "str q3, [%[state]]\n"
      "str s4, [%[state], #16]\n"
      : [blocks] "+r"(blocks), [count] "+r"(block_count)
      : [state] "r"(state), [constants] "r"(constants)
      : "v0", "v1", "v2", "v3", "v4", "v5", "v16", "v17", "v18", "v19", "v20", "v21", "v22", "v23",
        "memory");
}

void Sha1Armv8Finish(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                     uint8_t* digest) {
  FinishInMemory<Sha1Armv8, 5, true>(state, block, waiting, bit_count, digest);
}

}  // namespace mirolta

#endif
