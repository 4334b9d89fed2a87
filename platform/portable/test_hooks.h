// Test hooks of the runtime: failing allocations, freed memory that keeps its content, a set clock,
// probes of locks. All are off initially.
#pragma once

#include "mirolta/system.h"

namespace mirolta {

extern "C" {
// The next `count` allocations of the runtime (texts, arrays, objects, task memory) succeed and the
// one after them fails, once. A negative count switches this off.
MIROLTA_RUNTIME void MiroltaFailAllocationAfter(LONG count);
// True if that allocation has failed.
MIROLTA_RUNTIME bool MiroltaAllocationHasFailed();

// With `keep`, arrays and texts are not wiped when they are freed, as on a platform that does not
// wipe them, so that tests can find what is left in them.
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
