// Locks, threads, time, randomness and character sets of the base library.
#include <sched.h>
#include <sys/random.h>
#include <time.h>

#include "platform.h"
#include "system/system_library.h"

namespace mirolta::loader {
namespace {

// The device's critical section: 20 bytes, of which a section here uses one word.
struct DeviceSection {
  LONG lock_count;
  CRITICAL_SECTION* section;
  UINT reserved[3];
};
static_assert(sizeof(void*) != 4 || sizeof(DeviceSection) == 20, "the device's size");

void InitializeSection(DeviceSection* device) {
  *device = {};
  device->section = new CRITICAL_SECTION;
  InitializeCriticalSection(device->section);
}
void DeleteSection(DeviceSection* device) {
  DeleteCriticalSection(device->section);
  delete device->section;
  device->section = nullptr;
}
void EnterSection(DeviceSection* device) {
  EnterCriticalSection(device->section);
}
void LeaveSection(DeviceSection* device) {
  LeaveCriticalSection(device->section);
}

LONG Increment(LONG volatile* count) {
  return InterlockedIncrement(count);
}
LONG Decrement(LONG volatile* count) {
  return InterlockedDecrement(count);
}
LONG Exchange(LONG volatile* target, LONG value) {
  return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}
LONG CompareExchange(LONG volatile* target, LONG value, LONG expected) {
  __atomic_compare_exchange_n(target, &expected, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
  return expected;
}
LONG ExchangeAdd(LONG volatile* target, LONG value) {
  return __atomic_fetch_add(target, value, __ATOMIC_SEQ_CST);
}

void Sleep(DWORD milliseconds) {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  const timespec time = {static_cast<time_t>(milliseconds / 1000),
                         static_cast<long>(milliseconds % 1000) * 1000000};
  nanosleep(&time, nullptr);
}

INT GenRandom(DWORD size, BYTE* bytes) {
  while (size != 0) {
    const ssize_t got = getrandom(bytes, size, 0);
    if (got < 0) return FALSE;
    bytes += got;
    size -= static_cast<DWORD>(got);
  }
  return TRUE;
}

thread_local DWORD t_error = 0;
DWORD LastError() {
  return t_error;
}
void SetLastError(DWORD error) {
  t_error = error;
}

}  // namespace

std::span<const SystemFunction> ProcessFunctions() {
  static const SystemFunction functions[] = {
      Function("CeGenRandom", GenRandom),
      Function("DeleteCriticalSection", DeleteSection),
      Function("EnterCriticalSection", EnterSection),
      Function("GetLastError", LastError),
      Function("GetLocalTime", GetLocalTime),
      Function("GetTickCount", GetTickCount),
      Function("InitializeCriticalSection", InitializeSection),
      Function("InterlockedCompareExchange", CompareExchange),
      Function("InterlockedDecrement", Decrement),
      Function("InterlockedExchange", Exchange),
      Function("InterlockedExchangeAdd", ExchangeAdd),
      Function("InterlockedIncrement", Increment),
      Function("LeaveCriticalSection", LeaveSection),
      Function("MultiByteToWideChar", MultiByteToWideChar),
      Function("SetLastError", SetLastError),
      Function("Sleep", Sleep),
      Function("WideCharToMultiByte", WideCharToMultiByte),
  };
  return functions;
}

}  // namespace mirolta::loader
