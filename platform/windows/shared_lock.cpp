// The lock of what threads share below the objects, where the compiler's start-up code runs constructors.
#include "platform.h"
#include "windows/module_start.h"

namespace {

CRITICAL_SECTION shared_lock;

__attribute__((constructor)) void Open() {
  InitializeCriticalSection(&shared_lock);
}
__attribute__((destructor)) void Close() {
  DeleteCriticalSection(&shared_lock);
}

}  // namespace

namespace mirolta {

SharedLock::SharedLock() noexcept {
  EnterCriticalSection(&shared_lock);
}
SharedLock::~SharedLock() {
  LeaveCriticalSection(&shared_lock);
}

}  // namespace mirolta
