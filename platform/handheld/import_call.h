// IMPORT_CALL(name) defines the function `name`, which jumps to the imported one. The linker keeps the
// used ones.
#pragma once

// NOLINTNEXTLINE(hicpp-no-assembler): no function of the language can pass on unknown arguments.
#define IMPORT_CALL(name)                                   \
  __asm__(".section .text$" #name ",\"xr\",one_only," #name \
          "\n"                                              \
          ".p2align 2\n"                                    \
          ".globl " #name                                   \
          "\n"                                              \
          ".thumb_func\n" #name                             \
          ":\n"                                             \
          "ldr.w r12, 1f\n"                                 \
          "ldr.w pc, [r12]\n"                               \
          "1: .long __imp_" #name "\n");
