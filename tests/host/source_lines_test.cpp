#include "source/source_lines.h"

#include <gtest/gtest.h>

#include <string>

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
  EXPECT_EQ(LineOf(text, 7), "");
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

}  // namespace
}  // namespace mirolta::host
