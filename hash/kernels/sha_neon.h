// What the assembly of SHA-1 and SHA-256 for ARMv7 shares: its frame.
#pragma once

#include "hash_kernels.h"

// Macros that are lists become arguments.
#define MIROLTA_WITH(macro, ...) macro(__VA_ARGS__)

// clang-format off

// The body of a compression function: `first`, where r0 has the address of the chaining value, and `block`
// for each block. On the stack are `words` words for the schedule with constants, and behind them the
// addresses of the chaining value, of the next block, of the blocks' end and of the constants.
//
// r7 and r11 may be the compiler's frame pointer, so that they cannot be listed as overwritten. d16 to d31
// are not, because compilers that do not know them would warn: no caller has values in them, and a function
// that is not inlined has none of its own. d8 to d15, which a call preserves, are not used.
#define MIROLTA_COMPRESS(state, blocks, block_count, constants, words, first, block)            \
  if (block_count == 0) return;                                                                 \
  register uint32_t* r0 __asm__("r0") = state;                                                  \
  register const uint8_t* r1 __asm__("r1") = blocks;                                            \
  register const uint8_t* r2 __asm__("r2") = blocks + block_count * kHashBlockSize;             \
  register const uint32_t* r3 __asm__("r3") = constants;                                        \
  __asm__ volatile(                                                                             \
      ".fpu neon\n"                                                                             \
      "push {r0-r3, r7, r11}\n"                                                                 \
      "sub sp, sp, #4 * " words "\n"                                                            \
      first                                                                                     \
      "1:\n"                                                                                    \
      block                                                                                     \
      "ldr r0, [sp, #4 * " words " + 4]\n"                                                      \
      "ldr r1, [sp, #4 * " words " + 8]\n"                                                      \
      "cmp r0, r1\n"                                                                            \
      "bne 1b\n"                                                                                \
      "add sp, sp, #4 * " words " + 16\n"                                                       \
      "pop {r7, r11}\n"                                                                         \
      : "+r"(r0), "+r"(r1), "+r"(r2), "+r"(r3)                                                  \
      :                                                                                         \
      : "r4", "r5", "r6", "r8", "r9", "r10", "r12", "lr", "d0", "d1", "d2", "d3", "d4", "d5",   \
        "d6", "d7", "cc", "memory")

// clang-format on
