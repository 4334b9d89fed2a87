// The search for primes on several threads: the same numbers as on one.
#include "prime_search.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <vector>

#include "limb_basics.h"
#include "memory_watch.h"
#include "seam/threads.h"

namespace mirolta {
namespace {

using test::AllocationHasFailed;
using test::FailOneAllocation;
using test::LiveAllocations;

using Limbs = std::vector<Limb>;

// A random odd number of that many bits, and the limb for the carry.
Limbs RandomStart(size_t bits, uint32_t seed) {
  std::mt19937 random(seed);
  Limbs start((bits + kLimbBits - 1) / kLimbBits + 1, 0);
  for (size_t i = 0; i < bits - 1; ++i)
    start[i / kLimbBits] |= static_cast<Limb>(random() & 1) << (i % kLimbBits);
  start[0] |= 1;
  start[(bits - 1) / kLimbBits] |= Limb{1} << ((bits - 1) % kLimbBits);
  return start;
}

Limbs Found(Limbs start, size_t threads) {
  EXPECT_TRUE(SearchPrime(start.data(), start.size(), threads));
  return start;
}

// The lengths around that from which threads share the tests.
TEST(PrimeSearchTest, AnyNumberOfThreadsFindsTheSamePrime) {
  if (!kHasThreads) GTEST_SKIP() << "one thread searches";
  for (const size_t bits : {1279u, 1280u, 1281u, 1400u}) {
    for (uint32_t seed = 1; seed <= 2; ++seed) {
      const Limbs start = RandomStart(bits, seed);
      const Limbs expected = Found(start, 1);
      EXPECT_NE(expected, start);
      for (const size_t threads : {size_t{2}, size_t{3}, kMostThreads}) {
        EXPECT_EQ(Found(start, threads), expected) << bits << " bits, " << threads << " threads";
      }
      // A prime is its own result.
      EXPECT_EQ(Found(expected, 3), expected);
    }
  }
}

// 2^1403 + 9273 is the first prime from 2^1403 on; a window there has 5,616 numbers.
TEST(PrimeSearchTest, ThreadsCrossWindows) {
  if (!kHasThreads) GTEST_SKIP() << "one thread searches";
  Limbs start((1403 + kLimbBits) / kLimbBits + 1, 0);
  start[1403 / kLimbBits] = Limb{1} << (1403 % kLimbBits);
  Limbs expected = start;
  expected[0] = 9273;
  EXPECT_EQ(Found(start, 1), expected);
  EXPECT_EQ(Found(start, 3), expected);
}

TEST(PrimeSearchTest, AFailedAllocationIsReportedOrWithoutEffect) {
  if (!kHasThreads) GTEST_SKIP() << "one thread searches";
  const Limbs start = RandomStart(1280, 1);
  const Limbs expected = Found(start, 1);
  int failures = 0;
  for (long count = 0; count < 12; ++count) {
    const long before = LiveAllocations();
    Limbs found = start;
    bool succeeded = false;
    {
      const FailOneAllocation failing(count);
      succeeded = SearchPrime(found.data(), found.size(), 3);
    }
    if (succeeded) {
      EXPECT_EQ(found, expected) << count;
    } else {
      EXPECT_TRUE(AllocationHasFailed()) << count;
      ++failures;
    }
    found = Limbs();
    EXPECT_EQ(LiveAllocations(), before) << count;
  }
  EXPECT_GT(failures, 2);
}

struct Meeting {
  size_t expected;
  std::atomic<size_t> arrived{0};
  std::atomic<size_t> met{0};
};

// Waits for the others, which come only if they run at the same time.
void Meet(void* context) {
  Meeting& meeting = *static_cast<Meeting*>(context);
  ++meeting.arrived;
  while (meeting.arrived < meeting.expected) {
  }
  ++meeting.met;
}

TEST(ThreadsTest, AllCallsRunAtOnceAndHaveReturned) {
  for (const size_t count : {size_t{1}, size_t{2}, kMostThreads}) {
    Meeting meeting = {.expected = count};
    RunOnThreads(count, Meet, &meeting);
    EXPECT_EQ(meeting.met, count);
  }
}

TEST(ThreadsTest, AtLeastOneProcessorIsUsable) {
  EXPECT_GE(UsableProcessors(), 1u);
  EXPECT_LE(UsableProcessors(), kMostThreads);
}

}  // namespace
}  // namespace mirolta
