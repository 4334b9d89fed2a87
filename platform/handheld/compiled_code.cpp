// What compiled code refers to beyond the system's exports.
#include <bit>
#include <cstdint>
#include <new>

// The argument of the operators that do not throw.
const std::nothrow_t std::nothrow{};

// Large frames start with a call of it: r4 is their size in words and becomes that in bytes. It touches
// their pages from the top downwards, in the order in which the system adds pages to a stack.
// Changes r4, r12 and flags only.
extern "C" __attribute__((naked)) void __chkstk() {
  __asm__ __volatile__(
      "lsls r4, r4, #2\n\t"
      "mov r12, sp\n\t"
      "push {r0, r1}\n\t"
      "sub.w r0, r12, r4\n"
      "1:\n\t"
      "sub.w r12, r12, #4096\n\t"
      "cmp r12, r0\n\t"
      "it lo\n\t"
      "movlo r12, r0\n\t"
      "ldr.w r1, [r12]\n\t"
      "cmp r12, r0\n\t"
      "bhi 1b\n\t"
      "pop {r0, r1}\n\t"
      "bx lr");
}

// The quotient of dividend and divisor, which is not 0.
extern "C" __attribute__((used)) uint64_t MiroltaDivide64(uint64_t divisor, uint64_t dividend,
                                                          uint64_t* remainder) {
  uint64_t quotient = 0;
  if (divisor <= dividend) {
    const int places = std::countl_zero(divisor) - std::countl_zero(dividend);
    divisor <<= places;
    for (int i = 0; i <= places; ++i) {
      quotient <<= 1;
      if (divisor <= dividend) {
        dividend -= divisor;
        quotient |= 1;
      }
      divisor >>= 1;
    }
  }
  *remainder = dividend;
  return quotient;
}

// Division of 64 bits: r0 and r1 are the divisor, r2 and r3 the dividend; they become the quotient and
// the remainder.
extern "C" __attribute__((naked)) void __rt_udiv64() {
  __asm__ __volatile__(
      "push {r4, lr}\n\t"
      "sub sp, #16\n\t"
      "add r4, sp, #8\n\t"
      "str r4, [sp]\n\t"
      "bl MiroltaDivide64\n\t"
      "ldrd r2, r3, [sp, #8]\n\t"
      "add sp, #16\n\t"
      "pop {r4, pc}");
}
