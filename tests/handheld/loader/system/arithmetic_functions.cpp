// The division helpers of the base library, which compiled code calls. The divisor comes first, in
// r0, and the remainder returns beside the quotient, in r1; the C library's order is the other one.
#include "system/system_library.h"

#if defined(__arm__)

namespace mirolta::loader {
namespace {

__attribute__((naked)) void DivideSigned() {
  __asm__(
      "mov ip, r0\n\t"
      "mov r0, r1\n\t"
      "mov r1, ip\n\t"
      "push {r4, lr}\n\t"
      "bl __aeabi_idivmod\n\t"
      "pop {r4, pc}");
}

__attribute__((naked)) void DivideUnsigned() {
  __asm__(
      "mov ip, r0\n\t"
      "mov r0, r1\n\t"
      "mov r1, ip\n\t"
      "push {r4, lr}\n\t"
      "bl __aeabi_uidivmod\n\t"
      "pop {r4, pc}");
}

}  // namespace

std::span<const SystemFunction> ArithmeticFunctions() {
  static const SystemFunction functions[] = {
      Function("__rt_sdiv", DivideSigned),
      Function("__rt_udiv", DivideUnsigned),
  };
  return functions;
}

}  // namespace mirolta::loader

#endif
