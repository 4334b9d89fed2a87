// What the start-up code of a desktop's compiler does: the entry point of the file, and locals that are
// initialised once.
#include "platform.h"
#include "windows/module_start.h"

namespace {

// The system lends a waiting thread's priority to the one that holds the lock. A thread that polled
// would keep another of less priority from ever finishing.
CRITICAL_SECTION shared_lock;

}  // namespace

namespace mirolta {

SharedLock::SharedLock() noexcept {
  EnterCriticalSection(&shared_lock);
}
SharedLock::~SharedLock() {
  LeaveCriticalSection(&shared_lock);
}

}  // namespace mirolta

extern "C" {

// Constructors of globals would have to run here; the module has none, which a test checks.
BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) InitializeCriticalSection(&shared_lock);
  const BOOL started = DllMain(instance, reason, reserved);
  if (reason == DLL_PROCESS_DETACH) DeleteCriticalSection(&shared_lock);
  return started;
}

// Returns 1 to the thread that initialises a local, which then holds the lock, and 0 if it is done. The
// compiled code tests the lowest bit of a guard and calls __cxa_guard_acquire if it is zero.
int __cxa_guard_acquire(LONG volatile* guard) {
  EnterCriticalSection(&shared_lock);
  if (*guard == 0) return 1;
  LeaveCriticalSection(&shared_lock);
  return 0;
}
void __cxa_guard_release(LONG volatile* guard) {
  InterlockedExchange(guard, 1);
  LeaveCriticalSection(&shared_lock);
}
void __cxa_guard_abort(LONG volatile*) {
  LeaveCriticalSection(&shared_lock);
}

// A call of a pure virtual function.
void __cxa_pure_virtual() {
  __builtin_trap();
}
}
