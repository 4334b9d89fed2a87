// The Windows form of the runtime's test hooks. The runtime is the system's: they replace what this
// program, which is the module itself, imports from it.
#pragma once

#include "platform.h"

namespace mirolta {

extern "C" {
// The next `count` calls by which the program has the system allocate succeed, and the one after them
// fails, once. A negative count switches this off.
void MiroltaFailAllocationAfter(LONG count);
// True if that call has failed.
bool MiroltaAllocationHasFailed();

// The system never wipes what it frees.
inline void MiroltaKeepDestroyedArrays(bool) {}

// Replaces the clock of GetTickCount and GetLocalTime; null restores the system's.
struct MiroltaClock {
  DWORD (*ticks)();
  void (*local_time)(SYSTEMTIME* time);
};
void MiroltaSetClock(const MiroltaClock* clock);

// Called after the program enters a critical section and before it leaves it.
struct MiroltaLockProbe {
  void (*entered)(CRITICAL_SECTION* section);
  void (*leaving)(CRITICAL_SECTION* section);
};
void MiroltaSetLockProbe(const MiroltaLockProbe* probe);
}

}  // namespace mirolta
