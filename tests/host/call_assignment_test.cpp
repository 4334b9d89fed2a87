#include "call_assignment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace mirolta {
namespace {

struct RewriteCase {
  const char* script;
  const char* rewritten;
};

TEST(CallAssignment, AssignmentsToCallsAreRewritten) {
  const RewriteCase kCases[] = {
      {"o.T(1) = 2", "o[\"T()=\"](1).value = 2"},
      {"o.T() = 2", "o[\"T()=\"]().value = 2"},
      {"o.T(1)+=2", "o[\"T()=\"](1).value+=2"},
      {"o.T(1) >>>= 2", "o[\"T()=\"](1).value >>>= 2"},
      {"o . T\n(1)\n= 2", "o  [\"T()=\"]\n(1).value\n= 2"},
      {"o(1) = 2", "o[\"()=\"](1).value = 2"},
      {"f()(1) = 2", "f()[\"()=\"](1).value = 2"},
      {"o['T'](1) = 2", "o[('T')+\"()=\"](1).value = 2"},
      {"o[a[1]](1) = 2", "o[(a[1])+\"()=\"](1).value = 2"},
      {"a.b.T(f(1), (2)) = o.T(3) = 4",
       "a.b[\"T()=\"](f(1), (2)).value = o[\"T()=\"](3).value = 4"},
      {"o.return(1) = 2", "o[\"return()=\"](1).value = 2"},
      {"if (x) o.T(1) = 2", "if (x) o[\"T()=\"](1).value = 2"},
      {"o.T(o.U(1) = 2) = 3", "o[\"T()=\"](o[\"U()=\"](1).value = 2).value = 3"},
  };
  for (const RewriteCase& one : kCases) {
    EXPECT_EQ(RewriteCallAssignments(one.script), one.rewritten) << one.script;
  }
}

TEST(CallAssignment, OtherScriptsStayAsTheyAre) {
  const char* kScripts[] = {
      "",
      "o.T(1) == 2",
      "o.T(1) === 2",
      "o.T(1) != 2",
      "(o.t) = 2",
      "(a, b.c) = 2",
      "x = '.T(1) = 2'",
      "x = \".T(1) = 2\"",
      "x = '\\'.T(1) = 2'",
      "// o.T(1) = 2",
      "/* o.T(1) = 2 */",
      "x = /o.T(1) = 2/",
      "x = /[/]o.T(1) = 2/",
      "if (x) /'/.test(y)",
      "x = a / b; y = c / d",
      "x = a++ / b(1) / c",
      "x = (1) / b / '.T(1) = 2'",
      "function f(a) { }",
      "while (x) y = 1",
      "for (;;) x = 1",
      "\"never closed .T(1) = 2",
      "/* never closed .T(1) = 2",
      ") = 1",
      "( ) ) ] } = 1",
      "return /x(1) = 2/",
      "1e+5.T",
  };
  for (const char* script : kScripts) EXPECT_EQ(RewriteCallAssignments(script), script) << script;
}

TEST(CallAssignment, LineNumbersStay) {
  const std::string script = "a\n.\nT\n(\n1\n)\n=\n2";
  const std::string rewritten = RewriteCallAssignments(script);
  EXPECT_NE(rewritten, script);
  EXPECT_EQ(std::count(rewritten.begin(), rewritten.end(), '\n'),
            std::count(script.begin(), script.end(), '\n'));
}

// Whatever the bytes, it comes back and changes nothing but what it inserts.
TEST(CallAssignment, AnyBytesAreTaken) {
  const std::string pieces[] = {"(", ")",  "[",  "]",  "=", ".", "a", "/",
                                "'", "\"", "\\", "\n", "*", "{", "}"};
  uint32_t state = 1;
  for (int round = 0; round < 20000; ++round) {
    std::string script;
    for (int i = 0; i < 12; ++i) {
      state = state * 1664525u + 1013904223u;
      script += pieces[(state >> 16) % std::size(pieces)];
    }
    const std::string rewritten = RewriteCallAssignments(script);
    EXPECT_GE(rewritten.size() + 1, script.size()) << script;
  }
}

}  // namespace
}  // namespace mirolta
