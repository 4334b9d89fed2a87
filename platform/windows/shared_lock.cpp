// Initialises the lock of what threads share below the objects, where the compiler's start-up code runs constructors.
#include "platform.h"
#include "windows/module_start.h"

namespace mirolta {

CRITICAL_SECTION shared_section;

}  // namespace mirolta

namespace {

__attribute__((constructor)) void Open() {
  InitializeCriticalSection(&mirolta::shared_section);
}
__attribute__((destructor)) void Close() {
  DeleteCriticalSection(&mirolta::shared_section);
}

}  // namespace
