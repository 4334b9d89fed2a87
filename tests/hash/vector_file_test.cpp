#include "vector_file.h"

#include <gtest/gtest.h>

#include <sstream>

namespace mirolta::test {
namespace {

std::vector<VectorCase> Read(const std::string& text) {
  std::istringstream in(text);
  return ReadVectors(in, "text", {"Len", "Msg"});
}

TEST(VectorFile, ReadsCasesAndSections) {
  const auto cases = Read(
      "# comment\r\n[L = 20]\r\n\r\nLen = 8\r\nMsg = 0aFF\r\n\r\n\r\n"
      "[ENCRYPT]\nLen=0\n# between\nMsg =\n");
  ASSERT_EQ(cases.size(), 2u);
  EXPECT_EQ(cases[0].section, "L = 20");
  EXPECT_EQ(cases[0].line, 4);
  EXPECT_EQ(cases[0].Number("Len"), 8u);
  EXPECT_EQ(cases[0].Bytes("Msg"), (std::vector<uint8_t>{0x0A, 0xFF}));
  EXPECT_EQ(cases[1].section, "ENCRYPT");
  EXPECT_EQ(cases[1].Bytes("Msg"), std::vector<uint8_t>());
  EXPECT_TRUE(cases[1].Has("Len"));
  EXPECT_FALSE(cases[1].Has("Key"));
  EXPECT_THROW(cases[1].Text("Key"), std::runtime_error);
}

TEST(VectorFile, RefusesWhatItDoesNotUnderstand) {
  EXPECT_THROW(Read(""), std::runtime_error);
  EXPECT_THROW(Read("# nothing\n[section]\n"), std::runtime_error);
  EXPECT_THROW(Read("Len = 8\nKey = 00\n"), std::runtime_error);
  EXPECT_THROW(Read("Len = 8\nLen = 8\n"), std::runtime_error);
  EXPECT_THROW(Read("Len 8\n"), std::runtime_error);
  EXPECT_THROW(Read("[open\nLen = 8\n"), std::runtime_error);
  EXPECT_THROW(Read("Msg = 0x\n")[0].Bytes("Msg"), std::runtime_error);
  EXPECT_THROW(Read("Msg = 012\n")[0].Bytes("Msg"), std::runtime_error);
  EXPECT_THROW(Read("Len = 12a\n")[0].Number("Len"), std::runtime_error);
  EXPECT_THROW(ReadVectorFile("/nowhere/at/all", {"Len"}), std::runtime_error);
}

}  // namespace
}  // namespace mirolta::test
