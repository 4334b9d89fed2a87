// Checks of the guards of local statics, whose functions are built under these names, since the programs
// that check them have the language library's.
#pragma once

#include "client_checks.h"

extern "C" {
int TestedGuardAcquire(LONG volatile* guard);
void TestedGuardRelease(LONG volatile* guard);
void TestedGuardAbort(LONG volatile* guard);
}

namespace client {

struct Waiting {
  LONG volatile guard = 0;
  LONG volatile acquired = -1;
};

inline DWORD WINAPI Acquire(void* shared) {
  Waiting* const waiting = static_cast<Waiting*>(shared);
  const int acquired = TestedGuardAcquire(&waiting->guard);
  InterlockedExchange(&waiting->acquired, acquired);
  if (acquired == 1) TestedGuardRelease(&waiting->guard);
  return 0;
}

// One thread acquires the guard; another waits until `finish` and then gets `expected`.
inline void Wait(void (*finish)(LONG volatile*), LONG expected) {
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

inline void CheckGuards() {
  // Initialised once: the others learn that it is done.
  Wait(TestedGuardRelease, 0);
  // The initialisation failed: the next thread tries.
  Wait(TestedGuardAbort, 1);
  LONG volatile guard = 0;
  CHECK(TestedGuardAcquire(&guard) == 1);
  TestedGuardRelease(&guard);
  CHECK(*const_cast<const char volatile*>(reinterpret_cast<char volatile*>(&guard)) != 0);
  CHECK(TestedGuardAcquire(&guard) == 0);
}

inline int Finish() {
  printf("%ld checks, %ld failed\n", static_cast<long>(checks), static_cast<long>(failures));
  return failures == 0 ? 0 : 1;
}

}  // namespace client
