// What the compiler calls on its own behalf. The language library's versions report misuse by
// exceptions, whose machinery is larger than the module.
#include <cstdint>

#include "platform.h"

// This header needs the ones before it.
// clang-format off
#include <ntsecapi.h>
// clang-format on

namespace {

// States of a guarded initialisation, in the guard's own memory.
constexpr LONG kUntouched = 0;
constexpr LONG kDone = 1;
constexpr LONG kRunning = 0x100;

// The compiler reads the first byte of a guard and comes here if it is zero.
static_assert((kRunning & 0xFF) == 0 && (kDone & 0xFF) != 0);

}  // namespace

extern "C" {

// What functions with a guarded frame put behind it, and compare before they return.
extern uintptr_t __stack_chk_guard;
uintptr_t __stack_chk_guard = 0;

// Runs before all other code of the module; other frames must not be open meanwhile.
__attribute__((constructor(101), no_stack_protector)) static void ChooseStackGuard() {
  uintptr_t guard = 0;
  if (RtlGenRandom(&guard, sizeof guard) == FALSE) {
    guard = reinterpret_cast<uintptr_t>(&guard) ^ uintptr_t{GetTickCount()} * 0x9E3779B1u;
  }
  // A zero byte stops overruns by texts.
  __stack_chk_guard = guard & ~uintptr_t{0xFF};
}

void __stack_chk_fail() {
  __builtin_trap();
}

// Local statics: one thread initialises, the others wait. Returns 1 to the one that is to do it.
int __cxa_guard_acquire(LONG volatile* guard) {
  for (;;) {
    const LONG state = InterlockedCompareExchange(guard, kRunning, kUntouched);
    if (state == kUntouched) return 1;
    if (state == kDone) return 0;
    Sleep(0);
  }
}
void __cxa_guard_release(LONG volatile* guard) {
  InterlockedExchange(guard, kDone);
}
void __cxa_guard_abort(LONG volatile* guard) {
  InterlockedExchange(guard, kUntouched);
}

// A call of a method that has no body ends the process.
void __cxa_pure_virtual() {
  __builtin_trap();
}
}
