// What the start-up code of a desktop's compiler does: the entry point of the file, and locals that are
// initialised once.
#include "platform.h"
#include "windows/module_start.h"

namespace mirolta {

CRITICAL_SECTION shared_section;

}  // namespace mirolta

extern "C" {

// Constructors of globals would have to run here; the module has none, which a test checks.
BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) InitializeCriticalSection(&mirolta::shared_section);
  const BOOL started = DllMain(instance, reason, reserved);
  if (reason == DLL_PROCESS_DETACH) DeleteCriticalSection(&mirolta::shared_section);
  return started;
}

// Returns 1 to the thread that initialises a local, which then holds the lock, and 0 if it is done. The
// compiled code tests the lowest bit of a guard and calls __cxa_guard_acquire if it is zero.
int __cxa_guard_acquire(LONG volatile* guard) {
  EnterCriticalSection(&mirolta::shared_section);
  if (*guard == 0) return 1;
  LeaveCriticalSection(&mirolta::shared_section);
  return 0;
}
void __cxa_guard_release(LONG volatile* guard) {
  InterlockedExchange(guard, 1);
  LeaveCriticalSection(&mirolta::shared_section);
}
void __cxa_guard_abort(LONG volatile*) {
  LeaveCriticalSection(&mirolta::shared_section);
}

// A call of a pure virtual function.
void __cxa_pure_virtual() {
  __builtin_trap();
}
}
