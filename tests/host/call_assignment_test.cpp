#include "source/call_assignment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>

#include "generated_script.h"
#include "host_fixture.h"

namespace mirolta::host {
namespace {

using CallAssignmentEngine = EngineTest;

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
      {"if (a) (b)(c) = 1", "if (a) (b)[\"()=\"](c).value = 1"},
      {"this(1) = 2", "this[\"()=\"](1).value = 2"},
      {"o.if(1) = 2", "o[\"if()=\"](1).value = 2"},
      {"[f](1) = 2", "[f][\"()=\"](1).value = 2"},
      {"(function () {}(1)) (2) = 3", "(function () {}(1))[\"()=\"] (2).value = 3"},
      {"x = {} / 2, o.T('/') = 1", "x = {} / 2, o[\"T()=\"]('/').value = 1"},
      {"a = b\n/o.T(1) = 2/i", "a = b\n/o[\"T()=\"](1).value = 2/i"},
      {"'a\\\r\n' + o.T('') = 2", "'a\\\r\n' + o[\"T()=\"]('').value = 2"},
      {"// it's\ro.T(1) = '2'", "// it's\ro[\"T()=\"](1).value = '2'"},
      {"// it's\xE2\x80\xA8o.T(1) = '2'", "// it's\xE2\x80\xA8o[\"T()=\"](1).value = '2'"},
      {"<!-- it's\no.T(1) = '2'", "<!-- it's\no[\"T()=\"](1).value = '2'"},
  };
  for (const RewriteCase& one : kCases) {
    EXPECT_EQ(RewriteCallAssignments(one.script), one.rewritten) << one.script;
  }
}

TEST(CallAssignment, OtherScriptsDoNotChange) {
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
      // A parenthesis at the start of a statement
      "if (true) (a) = 1",
      "for (i in x) (b.c) = i",
      "for (;;) (b.c) = i",
      "while (x) (a) = 1",
      "with (x) (a) = 1",
      "do (a) = 1; while (x) (b) = 2",
      "if (x) y; else (a) = 1",
      "if\xC2\xA0(x) (a) = 1",
      "{ } (a) = 1",
      "function f() { } (a) = 1",
      "try { } catch (e) { } (a) = 1",
      "if (x) [a[0]] = 1",
      "x: for (;;) { break x\n(a) = 1 }",
      "x: for (;;) { continue x\n(a) = 1 }",
      "debugger\n(a) = 1",
      "a++\n(b) = 1",
      "switch (x) { case y: (a) = 1; default: (b) = 2 }",
      "x ? (a) : (b) = 1",
      "x: (a) = 1",
      "x = { if: (a) = 1, get if() { (b) = 2 }, return: /(1)(2) = 3/ }",
      // A slash after a brace or a keyword
      "x = {} / 2; y = '/(1) = 2'",
      "x = function () { } / 2; y = '/(1) = 2'",
      "{ } /'/.test(y)",
      "function f() { } /'/.test(y)",
      "x = y.return / 2 + '/(1) = 2'",
      "return\n{ } /'(1)(2) = 3/.test(y)",
      "x = a\n++/x'/.lastIndex; '(1)(2) = 3'",
      // Strings and comments over several lines, and comments of HTML
      "'a\\\r\no.T(1) = 2'",
      "'a\\\no.T(1) = 2'",
      "/* ' */ x = 'o.T(1) = 2'",
      "x\n--> it's o.T(1) = 2",
      "<!-- it's o.T(1) = 2",
  };
  for (const char* script : kScripts) EXPECT_EQ(RewriteCallAssignments(script), script) << script;
}

TEST(CallAssignment, LineNumbersDoNotChange) {
  const std::string script = "a\n.\nT\n(\n1\n)\n=\n2";
  const std::string rewritten = RewriteCallAssignments(script);
  EXPECT_NE(rewritten, script);
  EXPECT_EQ(std::count(rewritten.begin(), rewritten.end(), '\n'),
            std::count(script.begin(), script.end(), '\n'));
}

// The generator knows from the grammar what each parenthesis is.
TEST_F(CallAssignmentEngine, GeneratedScriptsAreRewrittenAsTheGeneratorExpects) {
  uint32_t state = 1;
  const std::function<uint32_t(uint32_t)> choose = [&](uint32_t count) {
    state = state * 1664525u + 1013904223u;
    return (state >> 8) % count;
  };
  int with_assignments = 0, without = 0;
  for (int round = 0; round < 10000; ++round) {
    state = static_cast<uint32_t>(round) * 2654435761u;
    const test::GeneratedScript one = test::MakeScript(choose);
    ASSERT_EQ(RewriteCallAssignments(one.script), one.rewritten) << round << ": " << one.script;
    // A rewritten script has no more assignments to calls.
    ASSERT_EQ(RewriteCallAssignments(one.rewritten), one.rewritten) << one.script;
    ++(one.call_assignments != 0 ? with_assignments : without);
    if (round % 8 != 0) continue;
    ASSERT_EQ(duk_pcompile_lstring(Api(), 0, one.rewritten.data(), one.rewritten.size()), 0)
        << PopText() << "\n"
        << one.rewritten;
    duk_pop(Api());
  }
  EXPECT_GT(with_assignments, 1000);
  EXPECT_GT(without, 1000);
}

// Rewriting removes at most the dot of a member, and inserts more.
TEST(CallAssignment, AnyBytesAreAcceptedAndNoneAreLost) {
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
}  // namespace mirolta::host
