// SHA-256 for ARMv7: rounds on 32-bit words, the message schedule with NEON, four words at once
// (FIPS 180-2, 6.2.2). In assembly: compilers spill what just fits the registers.
#include "hash_kernels.h"

#if MIROLTA_KERNELS_FOR(ARMV7)

  #include "sha256_constants.h"
  #include "sha_neon.h"

namespace mirolta {

namespace {

// clang-format off

// A round, with d += h before h takes the sum of a's functions. `w` is the word and constant of the round,
// `x` is b ^ c, `y` becomes a ^ b, which is b ^ c of the next round. r0 is free. The vector instructions
// `next` have nothing to do with the round: processors that run in order do both at once.
  #define MIROLTA_ROUND(a, b, c, d, e, f, g, h, w, x, y, next)  \
    "add " h ", " h ", " w "\n"                                 \
    "eor r0, " f ", " g "\n"                                    \
    "and r0, r0, " e "\n"                                       \
    "eor r0, r0, " g "\n"                                       \
    "add " h ", " h ", r0\n"                                    \
    "eor r0, " e ", " e ", ror #5\n"                            \
    "eor r0, r0, " e ", ror #19\n"                              \
    "add " h ", " h ", r0, ror #6\n"                            \
    next                                                        \
    "add " d ", " d ", " h "\n"                                 \
    "eor " y ", " a ", " b "\n"                                 \
    "eor r0, " a ", " a ", ror #11\n"                           \
    "eor r0, r0, " a ", ror #20\n"                              \
    "add " h ", " h ", r0, ror #2\n"                            \
    "and " x ", " x ", " y "\n"                                 \
    "eor " x ", " x ", " b "\n"                                 \
    "add " h ", " h ", " x "\n"

// Two rounds, whose words with constants are at `offset` on the stack. Afterwards g and h are a and b.
  #define MIROLTA_PAIR(a, b, c, d, e, f, g, h, offset, next1, next2)    \
    "ldrd r0, r1, [sp, #" offset "]\n"                                  \
    MIROLTA_ROUND(a, b, c, d, e, f, g, h, "r0", "r3", "r12", next1)     \
    MIROLTA_ROUND(h, a, b, c, d, e, f, g, "r1", "r12", "r3", next2)

// The four words of 16 rounds later in place of those in q`w`, whose halves are d`low` and d`high`. q`odd`
// has the words after the first of w, and gets those that it has to have two quads later: the words after
// the first of q`w8`, that is, of 8 rounds before the new ones. q`w4` and d`last` have those before the new
// ones. sigma0 and the sum of all but sigma1:
  #define MIROLTA_NEXT_1(odd, w8, w4)                           \
    "vshr.u32 q14, q" odd ", #7\n"                              \
    "vshr.u32 q15, q" odd ", #18\n"                             \
    "vshr.u32 q0, q" odd ", #3\n"                               \
    "vsli.32 q14, q" odd ", #25\n"                              \
    "vsli.32 q15, q" odd ", #14\n"                              \
    "vext.32 q" odd ", q" w8 ", q" w4 ", #1\n"                  \
    "veor q14, q14, q15\n"
// sigma1 of the last two words, for the first two.
  #define MIROLTA_NEXT_2(odd, w, last)                          \
    "veor q14, q14, q0\n"                                       \
    "vadd.i32 q" w ", q" w ", q" odd "\n"                       \
    MIROLTA_SIGMA1(last)                                        \
    "vadd.i32 q" w ", q" w ", q14\n"
  #define MIROLTA_SIGMA1(d)                                     \
    "vshr.u32 d30, d" d ", #17\n"                               \
    "vshr.u32 d31, d" d ", #19\n"                               \
    "vshr.u32 d0, d" d ", #10\n"                                \
    "vsli.32 d30, d" d ", #15\n"                                \
    "vsli.32 d31, d" d ", #13\n"
  #define MIROLTA_ADD_SIGMA1(d)                                 \
    "veor d30, d30, d31\n"                                      \
    "veor d30, d30, d0\n"                                       \
    "vadd.i32 d" d ", d" d ", d30\n"
  #define MIROLTA_NEXT_3(low)                                   \
    MIROLTA_ADD_SIGMA1(low)                                     \
    MIROLTA_SIGMA1(low)
  #define MIROLTA_NEXT_4(w, high)                               \
    "vld1.32 {d2-d3}, [r2]!\n"                                  \
    MIROLTA_ADD_SIGMA1(high)                                    \
    "vadd.i32 q1, q1, q" w "\n"                                 \
    "vst1.32 {d2-d3}, [lr]!\n"

// Four rounds with the words at `one` and `two` on the stack, and the schedule.
  #define MIROLTA_QUAD(a, b, c, d, e, f, g, h, one, two, odd, w, low, high, w8, w4, last)       \
    MIROLTA_PAIR(a, b, c, d, e, f, g, h, one, MIROLTA_NEXT_1(odd, w8, w4),                      \
                 MIROLTA_NEXT_2(odd, w, last))                                                  \
    MIROLTA_PAIR(g, h, a, b, c, d, e, f, two, MIROLTA_NEXT_3(low), MIROLTA_NEXT_4(w, high))
// The same without a schedule.
  #define MIROLTA_LAST_QUAD(a, b, c, d, e, f, g, h, one, two)   \
    MIROLTA_PAIR(a, b, c, d, e, f, g, h, one, "", "")           \
    MIROLTA_PAIR(g, h, a, b, c, d, e, f, two, "", "")

// a to h in quads of even and of odd number: four rounds turn them by four.
  #define MIROLTA_EVEN "r4", "r5", "r6", "r7", "r8", "r9", "r10", "r11"
  #define MIROLTA_ODD "r8", "r9", "r10", "r11", "r4", "r5", "r6", "r7"
  #define MIROLTA_FOUR(...) MIROLTA_WITH(MIROLTA_QUAD, __VA_ARGS__)
  #define MIROLTA_LAST_FOUR(...) MIROLTA_WITH(MIROLTA_LAST_QUAD, __VA_ARGS__)

// The chaining value is in r4 to r11. On the stack are 16 words with constants, the addresses of the
// chaining value, of the blocks and their end, and of the constants.
  #define MIROLTA_BLOCK                                                                 \
    "ldr r0, [sp, #68]\n"                                                               \
    "ldr r2, [sp, #76]\n"                                                               \
    "vld1.8 {d16-d19}, [r0]!\n"                                                         \
    "vld1.8 {d20-d23}, [r0]!\n"                                                         \
    "str r0, [sp, #68]\n"                                                               \
    "mov lr, sp\n"                                                                      \
    "vld1.32 {d0-d3}, [r2]!\n"                                                          \
    "vld1.32 {d4-d7}, [r2]!\n"                                                          \
    "vrev32.8 q8, q8\n"                                                                 \
    "vrev32.8 q9, q9\n"                                                                 \
    "vrev32.8 q10, q10\n"                                                               \
    "vrev32.8 q11, q11\n"                                                               \
    "vadd.i32 q0, q0, q8\n"                                                             \
    "vadd.i32 q1, q1, q9\n"                                                             \
    "vadd.i32 q2, q2, q10\n"                                                            \
    "vadd.i32 q3, q3, q11\n"                                                            \
    "vst1.32 {d0-d3}, [lr]!\n"                                                          \
    "vst1.32 {d4-d7}, [lr]\n"                                                           \
    "vext.32 q12, q8, q9, #1\n"                                                         \
    "vext.32 q13, q9, q10, #1\n"                                                        \
    "eor r3, r5, r6\n"                                                                  \
    "2:\n"                                                                              \
    "mov lr, sp\n"                                                                      \
    MIROLTA_FOUR(MIROLTA_EVEN, "0", "8", "12", "8", "16", "17", "10", "11", "23")       \
    MIROLTA_FOUR(MIROLTA_ODD, "16", "24", "13", "9", "18", "19", "11", "8", "17")       \
    MIROLTA_FOUR(MIROLTA_EVEN, "32", "40", "12", "10", "20", "21", "8", "9", "19")      \
    MIROLTA_FOUR(MIROLTA_ODD, "48", "56", "13", "11", "22", "23", "9", "10", "21")      \
    "ldr r0, [sp, #76]\n"                                                               \
    "add r0, r0, #256\n"                                                                \
    "cmp r0, r2\n"                                                                      \
    "bne 2b\n"                                                                          \
    MIROLTA_LAST_FOUR(MIROLTA_EVEN, "0", "8")                                           \
    MIROLTA_LAST_FOUR(MIROLTA_ODD, "16", "24")                                          \
    MIROLTA_LAST_FOUR(MIROLTA_EVEN, "32", "40")                                         \
    MIROLTA_LAST_FOUR(MIROLTA_ODD, "48", "56")                                          \
    "ldr r0, [sp, #64]\n"                                                               \
    "ldm r0, {r1, r2, r3, r12}\n"                                                       \
    "add r4, r4, r1\n"                                                                  \
    "add r5, r5, r2\n"                                                                  \
    "add r6, r6, r3\n"                                                                  \
    "add r7, r7, r12\n"                                                                 \
    "stm r0!, {r4-r7}\n"                                                                \
    "ldm r0, {r1, r2, r3, r12}\n"                                                       \
    "add r8, r8, r1\n"                                                                  \
    "add r9, r9, r2\n"                                                                  \
    "add r10, r10, r3\n"                                                                \
    "add r11, r11, r12\n"                                                               \
    "stm r0, {r8-r11}\n"

// clang-format on

}  // namespace

__attribute__((noinline)) void Sha256Neon(uint32_t* state, const uint8_t* blocks,
                                          size_t block_count) {
  MIROLTA_COMPRESS(state, blocks, block_count, kSha256Constants, "16", "ldm r0, {r4-r11}\n",
                   MIROLTA_BLOCK);
}

}  // namespace mirolta

#endif
