// Where tests reach into the runtime: allocations that fail, arrays that are not cleared, a clock
// that stands still, and who takes which lock. All hooks are off at start.
#pragma once

#include "portable/system.h"

namespace mirolta {

extern "C" {
// The next `count` allocations of the runtime (texts, arrays, objects, task memory) succeed and the
// one after them fails, once; a negative count switches failing off.
MIROLTA_RUNTIME void MiroltaFailAllocationAfter(LONG count);
// True if the failure asked for has happened.
MIROLTA_RUNTIME bool MiroltaAllocationHasFailed();

// Arrays and texts keep what they held when they are freed, as on a platform that does not clear
// them: so what their makers left there can be found in the freed memory.
MIROLTA_RUNTIME void MiroltaKeepDestroyedArrays(bool keep);

// Replaces the clock of GetTickCount and GetLocalTime; null restores the system's.
struct MiroltaClock {
  DWORD (*ticks)();
  void (*local_time)(SYSTEMTIME* time);
};
MIROLTA_RUNTIME void MiroltaSetClock(const MiroltaClock* clock);

// Called after a critical section is entered and before it is left.
struct MiroltaLockProbe {
  void (*entered)(CRITICAL_SECTION* section);
  void (*leaving)(CRITICAL_SECTION* section);
};
MIROLTA_RUNTIME void MiroltaSetLockProbe(const MiroltaLockProbe* probe);
}

}  // namespace mirolta
