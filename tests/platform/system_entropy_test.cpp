// The system's entropy when the system is slow, interrupted or has none. This program has a
// getrandom of its own, which the seam is linked to.
#include <gtest/gtest.h>
#include <sys/random.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "platform.h"

namespace {

// What the system does, call by call: bytes to give, or a failure to report. Then it gives all.
struct Answer {
  size_t most;
  int error;
};
std::vector<Answer> answers;
size_t calls = 0;
uint8_t next_byte = 1;

}  // namespace

extern "C" ssize_t getrandom(void* buffer, size_t length, unsigned int flags) {
  EXPECT_EQ(flags, 0u);
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

// The pool holds 256 bytes, four a number. When it cannot be filled again the process ends rather
// than give the same numbers twice.
TEST(SystemEntropyDeathTest, NoPoolIsUsedTwice) {
  SetAnswers({});
  ASSERT_TRUE(CurrentRandomSource().seed(1));
  for (int i = 0; i < 64; ++i) CurrentRandomSource().next();
  EXPECT_EQ(calls, 1u);
  CurrentRandomSource().next();
  EXPECT_EQ(calls, 2u);
  for (int i = 1; i < 64; ++i) CurrentRandomSource().next();
  answers.assign(3, {0, ENOSYS});
  EXPECT_DEATH(CurrentRandomSource().next(), "");
}

}  // namespace
}  // namespace mirolta
