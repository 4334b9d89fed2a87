// The compiler runtime routines of the module, built here under other names, since this program has
// the language library's.
#include "client_checks.h"

extern "C" {
extern uintptr_t TestedStackGuard;
int TestedGuardAcquire(LONG volatile* guard);
void TestedGuardRelease(LONG volatile* guard);
void TestedGuardAbort(LONG volatile* guard);
}

namespace {

struct Waiting {
  LONG volatile guard = 0;
  LONG volatile acquired = -1;
};

DWORD WINAPI Acquire(void* shared) {
  Waiting* const waiting = static_cast<Waiting*>(shared);
  const int acquired = TestedGuardAcquire(&waiting->guard);
  InterlockedExchange(&waiting->acquired, acquired);
  return 0;
}

// One thread acquires the guard; another waits until `finish` and then gets `expected`.
void Wait(void (*finish)(LONG volatile*), LONG expected) {
  Waiting waiting;
  CHECK(TestedGuardAcquire(&waiting.guard) == 1);
  const HANDLE thread = CreateThread(nullptr, 0, Acquire, &waiting, 0, nullptr);
  CHECK(WaitForSingleObject(thread, 100) == WAIT_TIMEOUT);
  CHECK(waiting.acquired == -1);
  finish(&waiting.guard);
  CHECK(WaitForSingleObject(thread, 60000) == WAIT_OBJECT_0);
  CHECK(waiting.acquired == expected);
  CloseHandle(thread);
}

}  // namespace

int main() {
  // Initialised once: the others learn that it is done.
  Wait(TestedGuardRelease, 0);
  // The initialisation failed: the next thread tries.
  Wait(TestedGuardAbort, 1);
  LONG volatile guard = 0;
  CHECK(TestedGuardAcquire(&guard) == 1);
  TestedGuardRelease(&guard);
  CHECK(*const_cast<const char volatile*>(reinterpret_cast<char volatile*>(&guard)) != 0);
  CHECK(TestedGuardAcquire(&guard) == 0);
  CHECK((TestedStackGuard & 0xFF) == 0);
  CHECK(TestedStackGuard != 0);
  printf("%ld checks, %ld failed\n", static_cast<long>(client::checks),
         static_cast<long>(client::failures));
  return client::failures == 0 ? 0 : 1;
}
