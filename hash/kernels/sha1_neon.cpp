// SHA-1 for ARMv7: rounds on 32-bit words, the message schedule with NEON, four words at once
// (FIPS 180-2, 6.1.2). In assembly, as sha256_neon.cpp is.
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(ARMV7)

  #include "sha_neon.h"

namespace mirolta {

namespace {

// clang-format off

// A round without its function. Operands are rotated for nothing: b is not when it becomes c, but c, d and
// e are where they are used. `w` is the word and constant of the round; r9 and r10 are free. The vector
// instructions `next` have nothing to do with the round: processors that run in order do both at once.
  #define MIROLTA_ROUND(a, e, w, next, function)                \
    "add " e ", " w ", " e ", ror #2\n"                         \
    next                                                        \
    function                                                    \
    "add " e ", " e ", " a ", ror #27\n"                        \
    "add " e ", " e ", r9\n"
  #define MIROLTA_CHOOSE(b, c, d, e)                            \
    "eor r9, " c ", " d "\n"                                    \
    "and r9, " b ", r9, ror #2\n"                               \
    "eor r9, r9, " d ", ror #2\n"
  #define MIROLTA_PARITY(b, c, d, e)                            \
    "eor r9, " c ", " d "\n"                                    \
    "eor r9, " b ", r9, ror #2\n"
// A sum of operands that share no bit.
  #define MIROLTA_MAJORITY(b, c, d, e)                          \
    "eor r9, " c ", " d "\n"                                    \
    "and r10, " c ", " d "\n"                                   \
    "and r9, " b ", r9, ror #2\n"                               \
    "add " e ", " e ", r10, ror #2\n"

// Four rounds. The vector instructions are in four parts.
  #define MIROLTA_QUAD(function, a, b, c, d, e, next1, next2, next3, next4)     \
    "ldm r12!, {r0-r3}\n"                                                       \
    MIROLTA_ROUND(a, e, "r0", next1, function(b, c, d, e))                      \
    MIROLTA_ROUND(e, d, "r1", next2, function(a, b, c, d))                      \
    MIROLTA_ROUND(d, c, "r2", next3, function(e, a, b, c))                      \
    MIROLTA_ROUND(c, b, "r3", next4, function(d, e, a, b))

// The constant of the rounds from the next schedule on.
  #define MIROLTA_NEXT_CONSTANT "vld1.32 {d4[], d5[]}, [r11]!\n"
  #define MIROLTA_STORE(w)                                      \
    "vadd.i32 q1, q" w ", q2\n"                                 \
    "vst1.32 {d2-d3}, [lr]!\n"

// The words 16 to 31, into q`w` from those of 16, 12, 8 and 4 rounds before. The fourth word needs the
// first: it is added when the others have been rotated. q3 is zero.
  #define MIROLTA_EARLY(constant, w, w16, w12, w8, w4)          \
    "vext.32 q0, q" w16 ", q" w12 ", #2\n"                      \
    "vext.32 q1, q" w4 ", q3, #1\n"                             \
    "veor q0, q0, q" w16 "\n",                                  \
    "veor q1, q1, q" w8 "\n"                                    \
    "veor q0, q0, q1\n"                                         \
    "vshr.u32 q" w ", q0, #31\n",                               \
    "vext.32 q1, q3, q0, #1\n"                                  \
    "vsli.32 q" w ", q0, #1\n"                                  \
    "vshr.u32 q0, q1, #30\n"                                    \
    "vsli.32 q0, q1, #2\n",                                     \
    "veor q" w ", q" w ", q0\n"                                 \
    constant                                                    \
    MIROLTA_STORE(w)
// The words from 32 on, in place of those of 32 rounds before: where no word needs another of the four, as
// w[t] = rotl(w[t - 6] ^ w[t - 16] ^ w[t - 28] ^ w[t - 32], 2), which the definition gives when it is
// applied to its own words.
  #define MIROLTA_LATE(constant, w, w28, w16, w8, w4)           \
    "veor q" w ", q" w ", q" w28 "\n"                           \
    "vext.32 q0, q" w8 ", q" w4 ", #2\n",                       \
    "veor q" w ", q" w ", q" w16 "\n"                           \
    "veor q0, q0, q" w "\n",                                    \
    "vshr.u32 q" w ", q0, #30\n"                                \
    "vsli.32 q" w ", q0, #2\n",                                 \
    constant                                                    \
    MIROLTA_STORE(w)
  #define MIROLTA_NONE "", "", "", ""

  #define MIROLTA_ROUNDS(...) MIROLTA_WITH(MIROLTA_QUAD, __VA_ARGS__)

// The 20 rounds of a function, with the schedule of 16 rounds later.
  #define MIROLTA_STAGE(function, next0, next1, next2, next3, next4)    \
    MIROLTA_ROUNDS(function, "r4", "r5", "r6", "r7", "r8", next0)       \
    MIROLTA_ROUNDS(function, "r5", "r6", "r7", "r8", "r4", next1)       \
    MIROLTA_ROUNDS(function, "r6", "r7", "r8", "r4", "r5", next2)       \
    MIROLTA_ROUNDS(function, "r7", "r8", "r4", "r5", "r6", next3)       \
    MIROLTA_ROUNDS(function, "r8", "r4", "r5", "r6", "r7", next4)

// The chaining value is in r4 to r8. On the stack are 80 words with constants, the addresses of the
// chaining value, of the blocks and their end, and of the constants.
  #define MIROLTA_BLOCK                                                                 \
    "ldr r0, [sp, #324]\n"                                                              \
    "ldr r11, [sp, #332]\n"                                                             \
    "vld1.8 {d16-d19}, [r0]!\n"                                                         \
    "vld1.8 {d20-d23}, [r0]!\n"                                                         \
    "str r0, [sp, #324]\n"                                                              \
    MIROLTA_NEXT_CONSTANT                                                               \
    "mov r12, sp\n"                                                                     \
    "mov lr, sp\n"                                                                      \
    "vrev32.8 q8, q8\n"                                                                 \
    "vrev32.8 q9, q9\n"                                                                 \
    "vrev32.8 q10, q10\n"                                                               \
    "vrev32.8 q11, q11\n"                                                               \
    "vadd.i32 q12, q8, q2\n"                                                            \
    "vadd.i32 q13, q9, q2\n"                                                            \
    "vadd.i32 q14, q10, q2\n"                                                           \
    "vadd.i32 q15, q11, q2\n"                                                           \
    "vst1.32 {d24-d27}, [lr]!\n"                                                        \
    "vst1.32 {d28-d31}, [lr]!\n"                                                        \
    "ror r6, r6, #30\n"                                                                 \
    "ror r7, r7, #30\n"                                                                 \
    "ror r8, r8, #30\n"                                                                 \
    MIROLTA_STAGE(MIROLTA_CHOOSE,                                                       \
                  MIROLTA_EARLY("", "12", "8", "9", "10", "11"),                        \
                  MIROLTA_EARLY(MIROLTA_NEXT_CONSTANT, "13", "9", "10", "11", "12"),    \
                  MIROLTA_EARLY("", "14", "10", "11", "12", "13"),                      \
                  MIROLTA_EARLY("", "15", "11", "12", "13", "14"),                      \
                  MIROLTA_LATE("", "8", "9", "12", "14", "15"))                         \
    MIROLTA_STAGE(MIROLTA_PARITY,                                                       \
                  MIROLTA_LATE("", "9", "10", "13", "15", "8"),                         \
                  MIROLTA_LATE(MIROLTA_NEXT_CONSTANT, "10", "11", "14", "8", "9"),      \
                  MIROLTA_LATE("", "11", "12", "15", "9", "10"),                        \
                  MIROLTA_LATE("", "12", "13", "8", "10", "11"),                        \
                  MIROLTA_LATE("", "13", "14", "9", "11", "12"))                        \
    MIROLTA_STAGE(MIROLTA_MAJORITY,                                                     \
                  MIROLTA_LATE("", "14", "15", "10", "12", "13"),                       \
                  MIROLTA_LATE(MIROLTA_NEXT_CONSTANT, "15", "8", "11", "13", "14"),     \
                  MIROLTA_LATE("", "8", "9", "12", "14", "15"),                         \
                  MIROLTA_LATE("", "9", "10", "13", "15", "8"),                         \
                  MIROLTA_LATE("", "10", "11", "14", "8", "9"))                         \
    MIROLTA_STAGE(MIROLTA_PARITY,                                                       \
                  MIROLTA_LATE("", "11", "12", "15", "9", "10"),                        \
                  MIROLTA_NONE,                                                         \
                  MIROLTA_NONE,                                                         \
                  MIROLTA_NONE,                                                         \
                  MIROLTA_NONE)                                                         \
    "ldr r9, [sp, #320]\n"                                                              \
    "ldm r9, {r0, r1, r2, r3, r10}\n"                                                   \
    "add r4, r0, r4\n"                                                                  \
    "add r5, r1, r5\n"                                                                  \
    "add r6, r2, r6, ror #2\n"                                                          \
    "add r7, r3, r7, ror #2\n"                                                          \
    "add r8, r10, r8, ror #2\n"                                                         \
    "stm r9, {r4-r8}\n"

// clang-format on

constexpr uint32_t kConstants[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

}  // namespace

__attribute__((noinline)) void Sha1Neon(uint32_t* state, const uint8_t* blocks,
                                        size_t block_count) {
  MIROLTA_COMPRESS(state, blocks, block_count, kConstants, "80",
                   "ldm r0, {r4-r8}\n"
                   "vmov.i32 q3, #0\n",
                   MIROLTA_BLOCK);
}

}  // namespace mirolta

#endif
