// What the module needs from its start on, and its entry point where no start-up code of a compiler is linked.
#pragma once

#include "system_headers.h"

namespace mirolta {

// The lock of the few things that threads share below the objects. It exists while the module is
// attached.
class SharedLock {
 public:
  SharedLock() noexcept;
  ~SharedLock();
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
