// What threads of the seam leave and take of the system.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <vector>

#include "seam/threads.h"

namespace mirolta {
namespace {

TEST(ThreadsTest, OnlyProcessorsOfThisProcessCount) {
  cpu_set_t all, one;
  ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  EXPECT_EQ(UsableProcessors(), 1u);
  ASSERT_EQ(sched_setaffinity(0, sizeof all, &all), 0);
  EXPECT_EQ(UsableProcessors(), std::min(static_cast<size_t>(CPU_COUNT(&all)), kMostThreads));
}

struct Seen {
  pthread_t caller = pthread_self();
  std::atomic<int> calls{0};
  std::atomic<int> without_interrupt{0};
  std::atomic<int> with_faults{0};
};

void LookAtSignals(void* context) {
  Seen& seen = *static_cast<Seen*>(context);
  ++seen.calls;
  if (pthread_equal(pthread_self(), seen.caller)) return;
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  seen.without_interrupt += sigismember(&blocked, SIGINT);
  seen.with_faults += !sigismember(&blocked, SIGSEGV);
}

TEST(ThreadsTest, SignalsGoToThreadsOfTheProgram) {
  Seen seen;
  RunOnThreads(3, LookAtSignals, &seen);
  EXPECT_EQ(seen.calls, 3);
  EXPECT_EQ(seen.without_interrupt, 2);
  EXPECT_EQ(seen.with_faults, 2);
  sigset_t own;
  pthread_sigmask(SIG_SETMASK, nullptr, &own);
  EXPECT_FALSE(sigismember(&own, SIGINT));
}

#ifndef MIROLTA_SLOW_BUILD

constexpr unsigned char kSecret = 0xA7;

struct Left {
  pthread_t caller = pthread_self();
  std::atomic<const unsigned char*> secret{nullptr};
};

void LeaveSecret(void* context) {
  Left& left = *static_cast<Left*>(context);
  if (pthread_equal(pthread_self(), left.caller)) return;
  unsigned char secret[4096];
  std::memset(secret, kSecret, sizeof secret);
  __asm__ __volatile__("" : : "r"(secret) : "memory");
  left.secret = secret;
}

// The C library keeps the stacks of threads that have ended, for the next ones.
TEST(ThreadsTest, TheirStacksAreWiped) {
  Left left;
  RunOnThreads(2, LeaveSecret, &left);
  ASSERT_NE(left.secret, nullptr);
  std::vector<unsigned char> bytes(4096);
  const iovec to = {bytes.data(), bytes.size()};
  const iovec from = {const_cast<unsigned char*>(left.secret.load()), bytes.size()};
  ASSERT_EQ(process_vm_readv(getpid(), &to, 1, &from, 1, 0), static_cast<ssize_t>(bytes.size()));
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), kSecret), 0);
}

void Count(void* context) {
  ++*static_cast<std::atomic<int>*>(context);
}

// Ends with the number of calls.
[[noreturn]] void CountWithoutMemory() {
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_AS, &none);
  std::atomic<int> calls{0};
  RunOnThreads(3, Count, &calls);
  _exit(calls);
}

TEST(ThreadsTest, WithoutMemoryTheCallerWorksAlone) {
  // In a new process: this one keeps stacks of the tests before.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(CountWithoutMemory(), testing::ExitedWithCode(1), "");
}

#endif

}  // namespace
}  // namespace mirolta
