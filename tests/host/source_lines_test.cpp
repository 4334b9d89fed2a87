#include "source/source_lines.h"

#include <gtest/gtest.h>

#include <string>

#include "source/statement_column.h"

namespace mirolta::host {
namespace {

TEST(SourceLines, LinesEndAsInEs5) {
  const std::string text =
      "a\nb\rc\r\nd\xE2\x80\xA8"
      "e\xE2\x80\xA9"
      "f\fg\vh\xC2\x85i";
  EXPECT_EQ(CountLines(text), 6);
  const char* kLines[] = {"a", "b", "c", "d", "e", "f\fg\vh\xC2\x85i"};
  int line = 1;
  for (const char* expected : kLines) EXPECT_EQ(LineOf(text, line++), expected);
  // A missing line has a place in the text: its offset can be computed.
  EXPECT_EQ(LineOf(text, 7), "");
  EXPECT_EQ(LineOf(text, 7).data(), text.data() + text.size());
}

TEST(SourceLines, AnEmptyLastLineCounts) {
  EXPECT_EQ(CountLines(""), 1);
  EXPECT_EQ(CountLines("a\n"), 2);
  EXPECT_EQ(CountLines("\r\n\r\n"), 3);
}

TEST(SourceLines, ColumnsCountCharacters) {
  const std::string text = "\xC3\xA9\xF0\x9F\x98\x80x\r\ny";
  const struct {
    size_t offset;
    int line, column;
  } kCases[] = {{0, 1, 1}, {2, 1, 2}, {6, 1, 3}, {7, 1, 4}, {9, 2, 1}, {10, 2, 2}};
  for (const auto& one : kCases) {
    const Place place = PlaceOf(text, one.offset);
    EXPECT_EQ(place.line, one.line) << one.offset;
    EXPECT_EQ(place.column, one.column) << one.offset;
  }
}

TEST(StatementColumn, TheOnlyStatementOfALineHasAColumn) {
  const struct {
    const char* script;
    int line, column;
  } kCases[] = {
      {"f();", 1, 1},
      {"  f();", 1, 3},
      {"\tf()\n\tg()", 2, 2},
      {"'\xC3\xA9'\n'\xC3\xA9' + f()", 2, 1},
      {"function f() { return x.y; }", 1, 16},
      {"if (a) {\n} /*\xC3\xA9*/ f();", 2, 9},
      {"try { f();\n} catch (e) { g(); }", 2, 15},
      {"try { f();\n} finally { g(); }", 2, 13},
      {"f()\nfunction g() { h.i; }", 2, 16},
      {"if (a) {\n} else { g(); }", 2, 10},
      {"var a = {\n  b: c.d\n};", 2, 3},
      {"f(1,\n  g(2));", 2, 3},
      {"f(function () {\n}, 1);", 2, 1},
      {"x = a\n  .b", 2, 3},
      {"/* c\n*/ f();", 2, 4},
      {"switch (a) {\n  default: f();\n}", 2, 12},
      // Several may fail, or none.
      {"f(); g();", 1, 0},
      {"if (a) f();", 1, 0},
      {"a: f();", 1, 0},
      {"x = function () { f(); };", 1, 0},
      {"switch (a) {\n  case b: f();\n}", 2, 0},
      {"f()\n\n// c\n", 2, 0},
      {"f();\n{\n}", 3, 0},
      {"f();", 2, 0},
      {"f('a\\\nb'); g();", 2, 0},
  };
  for (const auto& one : kCases) {
    EXPECT_EQ(StatementColumn(one.script, one.line), one.column) << one.script;
  }
}

}  // namespace
}  // namespace mirolta::host
