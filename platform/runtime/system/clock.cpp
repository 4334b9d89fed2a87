#include <atomic>
#include <ctime>
#include <mutex>

#include "portable/test_hooks.h"

namespace mirolta::runtime {
namespace {

std::atomic<const MiroltaClock*> g_clock{nullptr};

// tzset writes process-wide state and need not be thread-safe.
std::mutex g_time_zone;

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" void mirolta::MiroltaSetClock(const MiroltaClock* clock) {
  g_clock.store(clock, std::memory_order_release);
}

extern "C" DWORD GetTickCount() {
  const MiroltaClock* clock = g_clock.load(std::memory_order_acquire);
  if (clock != nullptr && clock->ticks != nullptr) return clock->ticks();
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  // Milliseconds modulo 2^32, as the platform counts.
  return static_cast<DWORD>(static_cast<uint64_t>(now.tv_sec) * 1000u +
                            static_cast<uint64_t>(now.tv_nsec) / 1000000u);
}

extern "C" void GetLocalTime(SYSTEMTIME* time) {
  const MiroltaClock* clock = g_clock.load(std::memory_order_acquire);
  if (clock != nullptr && clock->local_time != nullptr) {
    clock->local_time(time);
    return;
  }
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  {
    const std::lock_guard<std::mutex> lock(g_time_zone);
    tzset();  // localtime_r need not call it
    localtime_r(&now.tv_sec, &local);
  }
  *time = {static_cast<WORD>(local.tm_year + 1900), static_cast<WORD>(local.tm_mon + 1),
           static_cast<WORD>(local.tm_wday),        static_cast<WORD>(local.tm_mday),
           static_cast<WORD>(local.tm_hour),        static_cast<WORD>(local.tm_min),
           static_cast<WORD>(local.tm_sec),         static_cast<WORD>(now.tv_nsec / 1000000)};
}
