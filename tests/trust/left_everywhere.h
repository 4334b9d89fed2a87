// Functions that leave eight secret bytes, those at their argument, everywhere that a call may change.
#pragma once

#include "platform.h"

#if defined(__x86_64__) || defined(__i386__)

namespace mirolta::test {

// What the calling conventions let a function change.
  #if defined(__x86_64__)
    #if defined(_WIN32)
      #define MIROLTA_TAKE_SECRET "movq (%rcx), %rax\n\t"
      #define MIROLTA_LEAVE_GENERAL
      #define MIROLTA_FOR_VECTORS ".irp n,0,1,2,3,4,5\n\t"
      #define MIROLTA_FOR_WIDE_VECTORS \
        ".irp n,0,1,2,3,4,5,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
      // Of xmm6 to xmm15 the parts beyond the lowest 128 bits.
      #define MIROLTA_LEAVE_UPPER_PARTS                                                          \
        ".irp n,6,7,8,9,10,11,12,13,14,15\n\t"                                                   \
        "vinserti32x4 $1, %xmm0, %zmm\\n, %zmm\\n; vinserti32x4 $2, %xmm0, %zmm\\n, %zmm\\n\n\t" \
        "vinserti32x4 $3, %xmm0, %zmm\\n, %zmm\\n\n\t"                                           \
        ".endr\n\t"
    #else
      #define MIROLTA_TAKE_SECRET "movq (%rdi), %rax\n\t"
      #define MIROLTA_LEAVE_GENERAL "movq %rax, %rsi; movq %rax, %rdi\n\t"
      #define MIROLTA_FOR_VECTORS ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      #define MIROLTA_FOR_WIDE_VECTORS                                                         \
        ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28," \
        "29,30,31\n\t"
      #define MIROLTA_LEAVE_UPPER_PARTS
    #endif

// On the stack from the first place below the return address on, and in every register.
__attribute__((naked)) inline HRESULT LeaveEverywhere(void*) {
  __asm__(MIROLTA_TAKE_SECRET
          "movl $64, %ecx\n"
          "1:\n\t"
          "negq %rcx; movq %rax, (%rsp,%rcx,8); negq %rcx\n\t"
          "decq %rcx; jnz 1b\n\t"
          "movq %rax, %rcx; movq %rax, %rdx\n\t" MIROLTA_LEAVE_GENERAL
          "movq %rax, %r8; movq %rax, %r9; movq %rax, %r10; movq %rax, %r11\n\t" MIROLTA_FOR_VECTORS
          "movq %rax, %xmm\\n\n\t"
          ".endr\n\t"
          "xorl %eax, %eax\n\t"
          "ret");
}

// The same in the registers of AVX-512.
__attribute__((naked)) inline HRESULT LeaveInWideRegisters(void*) {
  __asm__(MIROLTA_TAKE_SECRET MIROLTA_FOR_WIDE_VECTORS
          "vpbroadcastq %rax, %zmm\\n\n\t"
          ".endr\n\t" MIROLTA_LEAVE_UPPER_PARTS
          ".irp n,0,1,2,3,4,5,6,7\n\t"
          "kmovq %rax, %k\\n\n\t"
          ".endr\n\t"
          "xorl %eax, %eax\n\t"
          "ret");
}

  #else

// Half of it in ecx and half in edx.
__attribute__((naked)) inline HRESULT LeaveEverywhere(void*) {
  __asm__(
      "movl 4(%esp), %eax\n\t"
      "movl (%eax), %ecx; movl 4(%eax), %edx\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "movq (%eax), %xmm\\n\n\t"
      ".endr\n\t"
      "movl $-64, %eax\n"
      "1:\n\t"
      "movl %ecx, (%esp,%eax,8); movl %edx, 4(%esp,%eax,8)\n\t"
      "incl %eax; jnz 1b\n\t"
      "ret");
}

__attribute__((naked)) inline HRESULT LeaveInWideRegisters(void*) {
  __asm__(
      "movl 4(%esp), %eax\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "vpbroadcastq (%eax), %zmm\\n\n\t"
      "kmovq (%eax), %k\\n\n\t"
      ".endr\n\t"
      "xorl %eax, %eax\n\t"
      "ret");
}

  #endif

}  // namespace mirolta::test

#endif
