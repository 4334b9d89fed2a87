// What the start-up code of a compiler does, for builds without one: the entry point of the file,
// constructors, and the probes of large frames. It replaces no part of the language support.
#include <new>

#include "platform.h"
#include "windows/module_start.h"

// The argument of the operators that do not throw.
const std::nothrow_t std::nothrow{};

namespace mirolta {

CRITICAL_SECTION shared_section;

}  // namespace mirolta

extern "C" {

// The linker's list: -1, the constructors, the last to run first, and 0.
using Constructor = void (*)();
extern const Constructor __CTOR_LIST__[];

// The loader calls it. No canary of the stack exists before the constructors have run.
__attribute__((no_stack_protector)) BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason,
                                                                  LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) {
    InitializeCriticalSection(&mirolta::shared_section);
    const Constructor* end = __CTOR_LIST__ + 1;
    while (*end != nullptr) ++end;
    while (--end != __CTOR_LIST__) (*end)();
  }
  const BOOL started = DllMain(instance, reason, reserved);
  if (reason == DLL_PROCESS_DETACH) DeleteCriticalSection(&mirolta::shared_section);
  return started;
}

// Large frames start with a call of it: x15 is their size in units of 16 bytes. It touches their pages
// from the top downwards, in the order in which the system adds pages to a stack. Changes x16, x17 and
// flags only.
__attribute__((naked)) void __chkstk() {
  __asm__ __volatile__(
      "lsl x16, x15, #4\n\t"
      "mov x17, sp\n"
      "1:\n\t"
      "sub x17, x17, #4096\n\t"
      "subs x16, x16, #4096\n\t"
      "ldr xzr, [x17]\n\t"
      "b.gt 1b\n\t"
      "ret");
}
}
