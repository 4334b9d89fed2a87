#include "portable/test_hooks.h"

#include "import_patch.h"

namespace mirolta {

namespace {

const MiroltaClock* clock = nullptr;
const MiroltaLockProbe* probe = nullptr;

DWORD WINAPI Ticks();
void WINAPI LocalTime(SYSTEMTIME* time);
void WINAPI Enter(CRITICAL_SECTION* section);
void WINAPI Leave(CRITICAL_SECTION* section);

const auto system_ticks = test::ReplaceImport("GetTickCount", Ticks);
const auto system_local_time = test::ReplaceImport("GetLocalTime", LocalTime);
const auto system_enter = test::ReplaceImport("EnterCriticalSection", Enter);
const auto system_leave = test::ReplaceImport("LeaveCriticalSection", Leave);

DWORD WINAPI Ticks() {
  return clock != nullptr ? clock->ticks() : system_ticks();
}

void WINAPI LocalTime(SYSTEMTIME* time) {
  clock != nullptr ? clock->local_time(time) : system_local_time(time);
}

void WINAPI Enter(CRITICAL_SECTION* section) {
  system_enter(section);
  if (probe != nullptr) probe->entered(section);
}

void WINAPI Leave(CRITICAL_SECTION* section) {
  if (probe != nullptr) probe->leaving(section);
  system_leave(section);
}

}  // namespace

void MiroltaSetClock(const MiroltaClock* replacement) {
  clock = replacement;
}

void MiroltaSetLockProbe(const MiroltaLockProbe* replacement) {
  probe = replacement;
}

}  // namespace mirolta
