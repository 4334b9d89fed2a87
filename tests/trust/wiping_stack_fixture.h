// Calls on a painted stack, which is searched for the secrets that are watched for.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "wiping_fixture.h"
#include "wiping_stack.h"

namespace mirolta::test {

class WipingStackTest : public WipingTest {
 protected:
  // A call twice, as the first has libraries load what they need: that goes deep, but meets no
  // secret but those that are searched for.
  void Run(const std::string& what, const std::function<void()>& call) {
    stack.Run(call);
    Search(what);
    stack.Run(call);
    Search(what);
  }
  void RunOnce(const std::string& what, const std::function<void()>& call) {
    stack.Run(call);
    Search(what);
  }

  void Search(const std::string& what) {
    ++searched;
    EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1) << what << ": on the stack";
    EXPECT_EQ(FindSecret(stack.Registers(), PaintedStack::kRegisterBytes), -1)
        << what << ": in registers";
  }

  // Early bound and on the painted stack.
  HRESULT CallPainted(const Subject& subject, const std::string& member, INVOKEKIND kind,
                      const std::vector<VARIANT>& arguments) {
    HRESULT status = E_FAIL;
    const MemberRow& row = MemberNamed(subject.Class(), member, kind);
    values.emplace_back();
    VARIANT* const result = &values.back();
    std::vector<VARIANT> own = arguments;
    RunOnce(Plain(subject.Class().name) + "." + member,
            [&] { status = subject.Call(row, own.data(), result); });
    return status;
  }

  PaintedStack stack;
  long searched = 0;
};

}  // namespace mirolta::test
