// What the module needs from its start on, and its entry point where no start-up code of a compiler is linked.
#pragma once

#include "system_headers.h"

namespace mirolta {

// Behind SharedLock. The file that defines it initialises it at the start of the module and deletes it at its end, so
// that no program links it without. The system lends a waiting thread's priority to the one that holds it. A thread
// that polled would keep another of less priority from ever finishing.
extern CRITICAL_SECTION shared_section;

// The lock of the few things that threads share below the objects. It exists while the module is
// attached.
class SharedLock {
 public:
  SharedLock() noexcept { EnterCriticalSection(&shared_section); }
  ~SharedLock() { LeaveCriticalSection(&shared_section); }
  SharedLock(const SharedLock&) = delete;
  SharedLock& operator=(const SharedLock&) = delete;
};

}  // namespace mirolta

extern "C" {
// The entry point of the file, which the loader calls. It prepares what compiled code needs, then calls
// DllMain.
BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved);

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
}
