// Compiler runtime routines. The language library's versions report misuse by exceptions, whose
// support is larger than the module.
//
// Only the system's headers: with a local static of the language library's the compiler declares the functions
// of its guard, with another type.
#include <cstdint>

#include "system_headers.h"

// This header needs the one before it.
// clang-format off
#include <ntsecapi.h>
// clang-format on

namespace {

// States of the initialisation of a local static, stored in its guard.
constexpr LONG kUntouched = 0;
constexpr LONG kDone = 1;
constexpr LONG kRunning = 0x100;

// The compiled code tests the first byte of a guard and calls __cxa_guard_acquire if it is zero.
static_assert((kRunning & 0xFF) == 0 && (kDone & 0xFF) != 0);

}  // namespace

extern "C" {

// The canary of stack-protected functions.
extern uintptr_t __stack_chk_guard;
uintptr_t __stack_chk_guard = 0;

// Runs before all other code of the module: the canary must not change while a protected function
// is active.
__attribute__((constructor(101), no_stack_protector)) static void ChooseStackGuard() {
  uintptr_t guard = 0;
  if (RtlGenRandom(&guard, sizeof guard) == FALSE) {
    guard = reinterpret_cast<uintptr_t>(&guard) ^ uintptr_t{GetTickCount()} * 0x9E3779B1u;
  }
  // A zero byte stops overruns by string functions.
  __stack_chk_guard = guard & ~uintptr_t{0xFF};
}

void __stack_chk_fail() {
  __builtin_trap();
}

// Returns 1 to the thread that initialises a local static; the others wait.
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

// A call of a pure virtual function.
void __cxa_pure_virtual() {
  __builtin_trap();
}
}
