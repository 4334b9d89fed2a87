// Texts that the build compiles into a program.
#include "embedded_text_test.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace mirolta::host {
namespace {

TEST(EmbeddedText, IsTheFileByteByByte) {
  std::string expected;
  for (int i = 1; i < 256; ++i) expected += static_cast<char>(i);
  EXPECT_EQ(kEveryByte, expected);
}

TEST(EmbeddedText, IsTheWholeFile) {
  std::ifstream file(MIROLTA_THIS_FILE, std::ios::binary);
  const std::string expected{std::istreambuf_iterator<char>(file), {}};
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(kThisFile, expected);
}

TEST(EmbeddedText, MayBeEmpty) {
  EXPECT_EQ(kNothing, "");
}

}  // namespace
}  // namespace mirolta::host
