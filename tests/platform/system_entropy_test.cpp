// The system's entropy when it is slow, interrupted or missing, and the numbers that known entropy
// gives. This program has a getrandom and a pthread_atfork of its own, which the seam is linked to:
// the module cannot replace the system's entropy.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include "platform.h"
#include "seam/entropy_generator.h"

namespace {

// What the system does, call by call: bytes to give, or a failure to report. Then it gives all.
struct Answer {
  size_t most;
  int error;
};
std::vector<Answer> answers;
size_t calls = 0;
uint8_t next_byte = 1;

// While it counts, the entropy is groups of four bytes of which no two are equal, for all threads.
bool counts_groups = false;
std::atomic<uint32_t> groups{0};

void GiveGroups(uint8_t* bytes, size_t length) {
  for (size_t i = 0; i < length; i += 4) {
    const uint32_t group = groups++;
    for (size_t j = 0; j < 4; ++j) bytes[i + j] = static_cast<uint8_t>(group >> (24 - 8 * j));
  }
}

bool forks_are_noted = true;
std::vector<void (*)()> fork_handlers;

}  // namespace

// Handlers that only the tests call, in their children.
extern "C" int pthread_atfork(void (*)(), void (*)(), void (*child)()) {
  if (!forks_are_noted) return ENOMEM;
  fork_handlers.push_back(child);
  return 0;
}

extern "C" ssize_t getrandom(void* buffer, size_t length, unsigned int flags) {
  EXPECT_EQ(flags, 0u);
  if (counts_groups) {
    GiveGroups(static_cast<uint8_t*>(buffer), length);
    return static_cast<ssize_t>(length);
  }
  const size_t call = calls++;
  if (call < answers.size() && answers[call].error != 0) {
    errno = answers[call].error;
    return -1;
  }
  size_t given = length;
  if (call < answers.size() && answers[call].most < given) given = answers[call].most;
  for (size_t i = 0; i < given; ++i) static_cast<uint8_t*>(buffer)[i] = next_byte++;
  return static_cast<ssize_t>(given);
}

namespace mirolta {
namespace {

void SetAnswers(std::vector<Answer> list) {
  answers = std::move(list);
  calls = 0;
  next_byte = 1;
}

// A process notes once that it watches forks, so this is the first test: those of its kind are
// first.
TEST(FirstSeedDeathTest, FailsWhereForksAreNotNoted) {
  SetAnswers({});
  forks_are_noted = false;
  EXPECT_FALSE(CurrentRandomSource().seed(1));
  EXPECT_EQ(calls, 0u);
  EXPECT_EQ(ForkCount(), 0u);
  forks_are_noted = true;
  EXPECT_TRUE(CurrentRandomSource().seed(1));
  EXPECT_TRUE(CurrentRandomSource().seed(2));
  EXPECT_EQ(fork_handlers.size(), 1u);
}

TEST(SystemEntropyTest, NothingAskedIsNothingDrawn) {
  SetAnswers({});
  EXPECT_TRUE(SystemEntropy(nullptr, 0));
  EXPECT_EQ(calls, 0u);
}

TEST(SystemEntropyTest, GoesOnAfterPartsAndInterruptions) {
  SetAnswers({{3, 0}, {0, EINTR}, {2, 0}});
  uint8_t bytes[11];
  std::memset(bytes, 0xEE, sizeof bytes);
  EXPECT_TRUE(SystemEntropy(bytes, 10));
  EXPECT_EQ(calls, 4u);
  const uint8_t expected[11] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0xEE};
  EXPECT_EQ(std::memcmp(bytes, expected, sizeof bytes), 0);
}

TEST(SystemEntropyTest, AFailureEndsItAtOnce) {
  SetAnswers({{2, 0}, {0, ENOSYS}});
  uint8_t bytes[10];
  EXPECT_FALSE(SystemEntropy(bytes, sizeof bytes));
  EXPECT_EQ(calls, 2u);
}

TEST(SystemEntropyTest, ASeedFailsWithIt) {
  SetAnswers({{0, ENOSYS}});
  EXPECT_FALSE(CurrentRandomSource().seed(1));
  SetAnswers({});
  EXPECT_TRUE(CurrentRandomSource().seed(1));
}

// A seed draws 64 bytes, four a number, and the pool is filled with 256. When it cannot be filled again the
// process ends rather than give the same numbers twice.
TEST(SystemEntropyDeathTest, NoPoolIsUsedTwice) {
  SetAnswers({});
  ASSERT_TRUE(CurrentRandomSource().seed(1));
  for (int i = 0; i < 16; ++i) CurrentRandomSource().next();
  EXPECT_EQ(calls, 1u);
  CurrentRandomSource().next();
  EXPECT_EQ(calls, 2u);
  for (int i = 1; i < 64; ++i) CurrentRandomSource().next();
  answers.assign(3, {0, ENOSYS});
  EXPECT_DEATH(CurrentRandomSource().next(), "");
}

// The sequence that a seed starts.
struct Sequence {
  uint32_t value;
  uint32_t Next() {
    value = value * 1664525u + 1013904223u;
    return value >> 8;
  }
};

// The number that four bytes in succession make, the first of them given.
uint32_t NumberOf(uint32_t first_byte, Sequence* sequence) {
  uint32_t entropy = 0;
  for (uint32_t i = 0; i < 4; ++i) entropy = entropy << 8 | ((first_byte + i) & 0xFF);
  return (entropy ^ sequence->Next()) & 0x7FFFFFFF;
}

TEST(EntropyGeneratorTest, KnownEntropyGivesKnownNumbers) {
  SetAnswers({});
  EntropyGenerator generator;
  ASSERT_TRUE(generator.Seed(0x12345678));
  // 01020304 ^ (0x12345678 * 1664525 + 1013904223 mod 2^32) / 256, and so on.
  EXPECT_EQ(generator.Next(), 0x1774023u);
  EXPECT_EQ(generator.Next(), 0x5CB3756u);
  EXPECT_EQ(generator.Next(), 0x92FD0F6u);
}

// A seed and two pools and a quarter: each byte of the system's goes into one number, in order.
TEST(EntropyGeneratorTest, EveryByteOfThePoolIsUsedOnce) {
  SetAnswers({});
  EntropyGenerator generator;
  ASSERT_TRUE(generator.Seed(99));
  Sequence sequence = {99};
  for (uint32_t i = 0; i < 160; ++i) {
    EXPECT_EQ(generator.Next(), NumberOf(1 + 4 * i, &sequence)) << i;
    EXPECT_EQ(calls, 1 + (i + 48) / 64) << i;
  }
  // A seed draws anew, and starts the sequence anew.
  next_byte = 40;
  ASSERT_TRUE(generator.Seed(7));
  sequence = {7};
  EXPECT_EQ(generator.Next(), NumberOf(40, &sequence));
}

TEST(EntropyGeneratorTest, BytesAreClearedAfterUse) {
  SetAnswers({});
  alignas(EntropyGenerator) uint8_t memory[sizeof(EntropyGenerator)];
  EntropyGenerator* const generator = new (memory) EntropyGenerator;
  ASSERT_TRUE(generator->Seed(1));
  std::vector<uint8_t> pool(64);
  for (size_t i = 0; i < pool.size(); ++i) pool[i] = static_cast<uint8_t>(i + 1);
  uint8_t* const end = memory + sizeof memory;
  const uint8_t* const at = std::search(memory, end, pool.begin(), pool.end());
  ASSERT_NE(at, end);
  for (size_t i = 0; i < 16; ++i) {
    generator->Next();
    for (size_t j = 0; j < 4; ++j) pool[4 * i + j] = 0;
    EXPECT_EQ(std::memcmp(at, pool.data(), pool.size()), 0) << i;
  }
}

TEST(EntropyGeneratorTest, AFailedSeedLeavesNothingToUse) {
  SetAnswers({{64, 0}, {40, 0}, {0, ENOSYS}});
  EntropyGenerator generator;
  ASSERT_TRUE(generator.Seed(1));
  EXPECT_FALSE(generator.Seed(1));
  // What comes next is from entropy of its own.
  next_byte = 200;
  Sequence sequence = {1};
  EXPECT_EQ(generator.Next(), NumberOf(200, &sequence));
}

// Runs in a child and returns its answer, -1 if it had none.
template <typename Child>
int InChild(const Child& child) {
  const pid_t id = fork();
  if (id == 0) {
    for (const auto handler : fork_handlers) handler();
    _exit(child());
  }
  int status = 0;
  EXPECT_EQ(waitpid(id, &status, 0), id);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(EntropyGeneratorTest, AChildDrawsItsOwnEntropy) {
  SetAnswers({});
  ASSERT_TRUE(CurrentRandomSource().seed(5));
  Sequence sequence = {5};
  EXPECT_EQ(CurrentRandomSource().next(), NumberOf(1, &sequence));

  // 100 means a first byte of 100 and one call; the parent's pool would continue with 5.
  const auto child = [&] {
    next_byte = 100;
    calls = 0;
    Sequence own = sequence;
    if (CurrentRandomSource().next() != NumberOf(100, &own)) return 1;
    if (CurrentRandomSource().next() != NumberOf(104, &own)) return 2;
    return calls == 1 ? 100 : 3;
  };
  EXPECT_EQ(InChild(child), 100);
  EXPECT_EQ(InChild([&] { return InChild(child); }), 100);
  // The parent's pool is still its own.
  EXPECT_EQ(CurrentRandomSource().next(), NumberOf(5, &sequence));
  EXPECT_EQ(calls, 1u);
}

TEST(EntropyGeneratorDeathTest, AChildWithoutEntropyEnds) {
  SetAnswers({{64, 0}, {0, ENOSYS}});
  ASSERT_TRUE(CurrentRandomSource().seed(5));
  EXPECT_EQ(InChild([] {
              CurrentRandomSource().next();
              return 0;
            }),
            -1);
}

TEST(EntropyGeneratorTest, AThreadHasAPoolOfItsOwn) {
  SetAnswers({});
  ASSERT_TRUE(CurrentRandomSource().seed(5));
  Sequence mine = {5};
  EXPECT_EQ(CurrentRandomSource().next(), NumberOf(1, &mine));
  std::thread other([] {
    next_byte = 77;
    ASSERT_TRUE(CurrentRandomSource().seed(6));
    Sequence its = {6};
    for (uint32_t i = 0; i < 3; ++i) {
      EXPECT_EQ(CurrentRandomSource().next(), NumberOf(77 + 4 * i, &its));
    }
  });
  other.join();
  EXPECT_EQ(CurrentRandomSource().next(), NumberOf(5, &mine));
}

TEST(EntropyGeneratorTest, NoByteIsHandedOutTwice) {
  constexpr uint32_t kThreads = 8;
  constexpr uint32_t kNumbers = 1000;
  SetAnswers({});
  counts_groups = true;
  groups = 0;
  std::vector<uint32_t> taken[kThreads];
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &taken] {
      Sequence sequence = {t};
      ASSERT_TRUE(CurrentRandomSource().seed(t));
      for (uint32_t i = 0; i < kNumbers; ++i) {
        taken[t].push_back((CurrentRandomSource().next() ^ sequence.Next()) & 0x7FFFFFFF);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  counts_groups = false;
  std::set<uint32_t> all;
  for (const auto& numbers : taken) all.insert(numbers.begin(), numbers.end());
  EXPECT_EQ(all.size(), kThreads * kNumbers);
  EXPECT_LT(*all.rbegin(), groups);
}

}  // namespace
}  // namespace mirolta
