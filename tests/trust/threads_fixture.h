// What the tests of threads share: the module around them, and calls that all threads make.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "all_at_once.h"
#include "member_calls.h"
#include "module_state.h"
#include "trust_test.h"

namespace mirolta::test {

inline constexpr unsigned kThreads = 8;
#ifdef MIROLTA_SLOW_BUILD
inline constexpr int kCalls = 250;
#else
inline constexpr int kCalls = 2000;
#endif

// The result as one line, freed.
inline std::string Taken(VARIANT* result) {
  std::string shown = Shown(*result);
  VariantClear(result);
  return shown;
}

// A call by name. Its arguments are made once: callers may give the same array to many calls.
class Call {
 public:
  Call(const char* member, const char* words)
      : row_(MemberNamed(member).row),
        name_(std::string(member) + "(" + words + ") "),
        arguments_(std::make_unique<Arguments>(words)) {}

  // Status and result of the call, as one line.
  std::string On(const Subject& subject, HRESULT* status = nullptr) const {
    VARIANT result;
    const HRESULT done = subject.Call(*row_, arguments_->Get(), &result);
    if (status != nullptr) *status = done;
    char code[16];
    std::snprintf(code, sizeof code, "%08X ", static_cast<unsigned>(done));
    return name_ + code + Taken(&result) + "\n";
  }

 private:
  const MemberRow* row_;
  std::string name_;
  std::unique_ptr<Arguments> arguments_;
};

class ThreadsTest : public TrustTest {
 protected:
  void SetUp() override {
    TrustTest::SetUp();
    ASSERT_EQ(DllRegisterServer(), S_OK);
    locks_at_start_ = CurrentModule()->lock_count;
  }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(CurrentModule()->lock_count, locks_at_start_);
    TrustTest::TearDown();
  }

 private:
  LONG locks_at_start_ = 0;
};

}  // namespace mirolta::test
