#include "source/member_uses.h"

#include <gtest/gtest.h>

#include <string>

namespace mirolta::host {
namespace {

// "call", "read" or "both" for the name Name in a script, and what the script computes.
std::string UseOfName(const char* script) {
  const MemberUses uses = FindMemberUses(script);
  const bool is_called = uses.called.contains("Name");
  const bool is_read = uses.read.contains("Name");
  std::string text = is_called && is_read ? "both" : is_called ? "call" : is_read ? "read" : "none";
  if (uses.calls_computed) text += ", computed calls";
  if (uses.reads_computed) text += ", computed reads";
  return text;
}

struct UseCase {
  const char* script;
  const char* use;
};

TEST(MemberUses, CallsAreToldFromReads) {
  const UseCase kCases[] = {
      {"", "none"},
      {"o.Name(1)", "call"},
      {"o.Name /* x */ \n (1)", "call"},
      {"o['Name'](1)", "call"},
      {"o.p[0].Name()", "call"},
      {"with (o) Name(1)", "call"},
      {"return Name(1)", "call"},
      {"o.Name", "read"},
      {"o.Name; (1)", "read"},
      {"x = o.Name + 1", "read"},
      {"o['Name']", "read"},
      {"o.Name = 1", "read"},
      {"o.Name.call(p)", "read"},
      {"with (o) x = Name", "read"},
      {"o.Name(o.Name)", "both"},
      {"a = 'Name'", "read"},
      {"f('Name')", "read"},
      {"new o.Name(1)", "both"},
      {"new Name(1)", "both"},
      {"new a.Name.b(1)", "read"},
      {"// o.Name(1)", "none"},
      {"'o.Name(1)'", "none"},
      {"/o.Name(1)/", "none"},
      {"x / o.Name(1) / 2", "call"},
      {"o['Name'] (1) ['Name']", "both"},
      {"o['Name()='](1)", "none"},
  };
  for (const UseCase& one : kCases) EXPECT_EQ(UseOfName(one.script), one.use) << one.script;
}

TEST(MemberUses, WhatTheTextDoesNotSayIsReportedAsComputed) {
  const UseCase kCases[] = {
      {"(o.Name)(1)", "read, computed calls"},
      {"((o.Name))(1)", "read, computed calls"},
      {"o[k](1)", "none, computed calls, computed reads"},
      {"o['a' + 'b'](1)", "none, computed calls, computed reads"},
      {"o[k]", "none, computed reads"},
      {"o()[k]", "none, computed reads"},
      {"o[0][k]", "none, computed reads"},
      {"'ab'[k]", "none, computed reads"},
      {"({})[k]", "none, computed reads"},
      {"this[k]", "none, computed reads"},
      {"Reflect.get(o, k)", "none, computed reads"},
      {"o.N\\u0061me", "none, computed reads"},
      {"o.N\\u0061me()", "none, computed calls"},
      {"o['N\\x61me']", "none, computed reads"},
      {"o['N\\x61me']()", "none, computed calls"},
      {"o.Name(1)(2)", "call"},
      {"o.Name(1)[k](2)", "call, computed calls, computed reads"},
      {"o.f((o.Name))(2)", "read"},
      {"o[0]", "none"},
      {"o[0](1)", "none"},
      {"x = [k]", "none"},
      {"x = [k, [k]]", "none"},
      {"f([k])", "none"},
      {"return [k]", "none"},
      {"x = { a: [k] }", "none"},
      {"(function () { f() })(1)", "none"},
      {"(function () { f() }(1))", "none"},
  };
  for (const UseCase& one : kCases) EXPECT_EQ(UseOfName(one.script), one.use) << one.script;
}

TEST(MemberUses, VeryLongNamesAreLeftOut) {
  const std::string longest(255, 'a');
  const MemberUses uses = FindMemberUses("o." + longest + "; o." + longest + "b()");
  EXPECT_TRUE(uses.read.contains(longest));
  EXPECT_FALSE(uses.called.contains(longest + "b"));
}

}  // namespace
}  // namespace mirolta::host
