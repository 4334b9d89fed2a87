// Calls of the system that a signal interrupts.
#include "portable/repeated_call.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace mirolta {
namespace {

TEST(RepeatedCall, EndsWithTheFirstResultThatIsNoInterruption) {
  int calls = 0;
  const auto interrupted_twice = [&calls] {
    errno = EINTR;
    return ++calls < 3 ? -1 : 7;
  };
  EXPECT_EQ(Repeated(interrupted_twice), 7);
  EXPECT_EQ(calls, 3);
}

TEST(RepeatedCall, OtherFailuresAreResults) {
  int calls = 0;
  const auto failing = [&calls] {
    ++calls;
    errno = EIO;
    return -1;
  };
  EXPECT_EQ(Repeated(failing), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(calls, 1);
}

// An earlier call's.
TEST(RepeatedCall, TheErrorNumberOfASuccessMeansNothing) {
  for (const int result : {0, 1}) {
    int calls = 0;
    errno = EINTR;
    const auto successful = [&calls, result] { return ++calls == 1 ? result : -2; };
    EXPECT_EQ(Repeated(successful), result);
    EXPECT_EQ(calls, 1) << result;
  }
}

}  // namespace
}  // namespace mirolta
