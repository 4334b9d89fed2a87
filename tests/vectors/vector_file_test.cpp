// The reader of vector files, and what holds for the files here.
#include "vector_file.h"

#include <gtest/gtest.h>

#include <sstream>

namespace mirolta::test {
namespace {

std::vector<VectorCase> Read(const std::string& text) {
  std::istringstream in(text);
  return ReadVectors(in, "text", {"Len", "Msg"});
}

TEST(VectorFile, CasesAreTheFieldsBetweenEmptyLinesAndSections) {
  const auto cases = Read(
      "# comment\r\n[L = 20]\r\n\r\nLen = 8\r\nMsg = 0aFF\r\n\r\n\r\n"
      "[ENCRYPT]\nLen=0\n# between\nMsg =\n");
  ASSERT_EQ(cases.size(), 2u);
  EXPECT_EQ(cases[0].section, "L = 20");
  EXPECT_EQ(cases[0].line, 4);
  EXPECT_EQ(cases[0].Number("Len"), 8u);
  EXPECT_EQ(cases[0].Bytes("Msg"), (Bytes{0x0A, 0xFF}));
  EXPECT_EQ(cases[1].section, "ENCRYPT");
  EXPECT_EQ(cases[1].line, 9);
  EXPECT_EQ(cases[1].Bytes("Msg"), Bytes());
  EXPECT_TRUE(cases[1].Has("Len"));
  EXPECT_FALSE(cases[1].Has("Key"));
}

struct BadFile {
  const char* name;
  const char* text;
  const char* message;
};

class BadVectorFile : public testing::TestWithParam<BadFile> {};

INSTANTIATE_TEST_SUITE_P(
    Texts, BadVectorFile,
    testing::Values(BadFile{"Empty", "", "text: no cases"},
                    BadFile{"WithoutCases", "# nothing\n[section]\n", "text: no cases"},
                    BadFile{"UnknownField", "Len = 8\nKey = 00\n", "text:2: unknown field Key"},
                    BadFile{"RepeatedField", "Len = 8\nLen = 8\n", "text:2: field Len twice"},
                    BadFile{"NoField", "Len 8\n", "text:1: neither field nor section"},
                    BadFile{"OpenSection", "[open\nLen = 8\n", "text:1: section without end"},
                    BadFile{"UnreadField", "[s]\nLen = 8\nMsg = 00\n",
                            "text:2 [s]: field Msg is not read"},
                    BadFile{"MissingField", "Msg = 00\n", "line 1: no field Len"},
                    BadFile{"NoNumber", "Len = 12a\n", "Len is not a number"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(BadVectorFile, IsRefusedWithItsLine) {
  std::istringstream in(GetParam().text);
  try {
    CheckVectors(in, "text", {"Len", "Msg"}, [](const VectorCase& one) { one.Number("Len"); });
    ADD_FAILURE() << "taken";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), GetParam().message);
  }
}

TEST(VectorFile, ChecksRunOncePerCase) {
  std::istringstream in("Len = 1\n\nLen = 2\n[s]\nLen = 3\n");
  std::vector<unsigned long> seen;
  CheckVectors(in, "text", {"Len"},
               [&](const VectorCase& one) { seen.push_back(one.Number("Len")); });
  EXPECT_EQ(seen, (std::vector<unsigned long>{1, 2, 3}));
}

TEST(VectorFile, AFileThatIsNotThereIsRefused) {
  const auto ignore = [](const VectorCase&) {};
  EXPECT_THROW(CheckVectorFile("/nowhere/at/all", {"Len"}, ignore), std::runtime_error);
}

TEST(VectorFile, TextThatIsNotWholeBytesIsRefused) {
  EXPECT_THROW(Read("Msg = 0x\n")[0].Bytes("Msg"), std::runtime_error);
  EXPECT_THROW(Read("Msg = 012\n")[0].Bytes("Msg"), std::runtime_error);
}

TEST(VectorFiles, EachNamesItsOriginInItsFirstLine) {
  for (const char* name : {MIROLTA_VECTOR_FILES}) {
    std::ifstream in(std::string(MIROLTA_VECTORS) + "/" + name);
    std::string line;
    EXPECT_TRUE(std::getline(in, line)) << name;
    EXPECT_EQ(line.rfind("# Origin: ", 0), 0u) << name;
    EXPECT_GT(line.size(), 16u) << name;
  }
}

}  // namespace
}  // namespace mirolta::test
