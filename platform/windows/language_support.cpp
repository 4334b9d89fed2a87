// What the compiler calls on its own behalf. The language library's versions report misuse by
// exceptions, whose machinery is larger than the module.
#include "platform.h"

namespace {

// States of a guarded initialisation, in the guard's own memory.
constexpr LONG kUntouched = 0;
constexpr LONG kDone = 1;
constexpr LONG kRunning = 0x100;

// The compiler reads the first byte of a guard and comes here if it is zero.
static_assert((kRunning & 0xFF) == 0 && (kDone & 0xFF) != 0);

}  // namespace

extern "C" {

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
