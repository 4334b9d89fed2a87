#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>
#include <vector>

#include "all_at_once.h"
#include "portable/test_hooks.h"
#include "system_support.h"

namespace mirolta {
namespace {

// The first test: the first call reads the time zone.
TEST(Clock, TellsManyThreadsTheTime) {
  test::AllAtOnce(8, [](unsigned) {
    for (int n = 0; n < 50; ++n) {
      SYSTEMTIME now = {};
      GetLocalTime(&now);
      EXPECT_GE(now.wYear, 2024);
    }
  });
}

TEST(Clock, FollowsTheSystem) {
  const DWORD before = GetTickCount();
  std::this_thread::sleep_for(std::chrono::milliseconds(3));
  EXPECT_GE(GetTickCount() - before, 2u);

  // By the same clock: std::time may give the second before for some milliseconds.
  using Clock = std::chrono::system_clock;
  const std::time_t earliest = Clock::to_time_t(Clock::now());
  SYSTEMTIME now = {};
  GetLocalTime(&now);
  const std::time_t latest = Clock::to_time_t(Clock::now());
  std::tm local = {};
  local.tm_year = now.wYear - 1900;
  local.tm_mon = now.wMonth - 1;
  local.tm_mday = now.wDay;
  local.tm_hour = now.wHour;
  local.tm_min = now.wMinute;
  local.tm_sec = now.wSecond;
  local.tm_isdst = -1;
  const std::time_t seen = std::mktime(&local);
  EXPECT_GE(seen, earliest);
  EXPECT_LE(seen, latest);
  EXPECT_EQ(now.wDayOfWeek, local.tm_wday);
  EXPECT_LT(now.wMilliseconds, 1000);
}

TEST(Clock, CanBeReplaced) {
  const MiroltaClock clock = {[]() -> DWORD { return 12345; },
                              [](SYSTEMTIME* time) { *time = {2005, 6, 3, 15, 10, 20, 30, 400}; }};
  MiroltaSetClock(&clock);
  EXPECT_EQ(GetTickCount(), 12345u);
  SYSTEMTIME time = {};
  GetLocalTime(&time);
  EXPECT_EQ(time.wYear, 2005);
  EXPECT_EQ(time.wDay, 15);
  EXPECT_EQ(time.wMilliseconds, 400);
  MiroltaSetClock(nullptr);
  GetLocalTime(&time);
  EXPECT_GE(time.wYear, 2024);
}

TEST(CriticalSection, ItsOwnerMayEnterAgain) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  EnterCriticalSection(&section);
  EnterCriticalSection(&section);
  LeaveCriticalSection(&section);
  std::atomic<bool> tried = false;
  bool entered = false;
  std::thread other([&] {
    EXPECT_NE(pthread_mutex_trylock(&section.mutex), 0);  // still held once
    tried = true;
    EnterCriticalSection(&section);
    entered = true;
    LeaveCriticalSection(&section);
  });
  while (!tried) std::this_thread::yield();
  LeaveCriticalSection(&section);
  other.join();
  EXPECT_TRUE(entered);
  DeleteCriticalSection(&section);
}

TEST(CriticalSection, KeepsThreadsApart) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  int count = 0;
  test::AllAtOnce(4, [&](unsigned) {
    for (int n = 0; n < 1000; ++n) {
      EnterCriticalSection(&section);
      ++count;
      LeaveCriticalSection(&section);
    }
  });
  EXPECT_EQ(count, 4000);
  DeleteCriticalSection(&section);
}

std::vector<std::pair<char, CRITICAL_SECTION*>> g_seen;

TEST(CriticalSection, TheProbeSeesEntriesAndExits) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  const MiroltaLockProbe probe = {[](CRITICAL_SECTION* s) { g_seen.emplace_back('e', s); },
                                  [](CRITICAL_SECTION* s) { g_seen.emplace_back('l', s); }};
  MiroltaSetLockProbe(&probe);
  EnterCriticalSection(&section);
  EnterCriticalSection(&section);
  LeaveCriticalSection(&section);
  LeaveCriticalSection(&section);
  MiroltaSetLockProbe(nullptr);
  EnterCriticalSection(&section);
  LeaveCriticalSection(&section);
  const std::vector<std::pair<char, CRITICAL_SECTION*>> expected = {
      {'e', &section}, {'e', &section}, {'l', &section}, {'l', &section}};
  EXPECT_EQ(g_seen, expected);
  DeleteCriticalSection(&section);
}

TEST(Threads, HaveNumbersOfTheirOwn) {
  const DWORD mine = GetCurrentThreadId();
  EXPECT_EQ(GetCurrentThreadId(), mine);
  DWORD other = mine;
  std::thread([&] { other = GetCurrentThreadId(); }).join();
  EXPECT_NE(other, mine);
}

}  // namespace
}  // namespace mirolta
