// Numbers whose bytes are characters.
#include "big_code_page_text.h"

#include <gtest/gtest.h>

#include "big_testing.h"
#include "memory_watch.h"
#include "owned_value.h"
#include "runtime_allocations.h"

namespace mirolta::test {
namespace {

using Text = std::basic_string<OLECHAR>;

Text TextOfNumber(const std::string& hex, LONG code_page) {
  OwnedBstr text;
  EXPECT_EQ(NumberToCodePageText(BigHex(hex), code_page, text.Put()), S_OK);
  if (text.Get() == nullptr) return OLESTR("(null)");
  return Text(text.Get(), SysStringLen(text.Get()));
}

std::string NumberOfText(const Text& text, LONG code_page) {
  const OwnedBstr copy(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
  BigInt n(77);
  EXPECT_EQ(NumberFromCodePageText(n, copy.Get(), code_page), S_OK);
  return Hex(n);
}

TEST(BigCodePageTextTest, TextIsConvertedByTheCharacterSet) {
  EXPECT_EQ(TextOfNumber("616263", 0), OLESTR("abc"));
  EXPECT_EQ(TextOfNumber("e4", 1252), OLESTR("\u00E4"));
  EXPECT_EQ(TextOfNumber("80", 1252), OLESTR("\u20AC"));
  EXPECT_EQ(TextOfNumber("c3a4e282ac", 65001), OLESTR("\u00E4\u20AC"));
  EXPECT_EQ(NumberOfText(OLESTR("abc"), 0), "616263");
  EXPECT_EQ(NumberOfText(OLESTR("\u00E4"), 1252), "e4");
  EXPECT_EQ(NumberOfText(OLESTR("\u00E4\u20AC"), 65001), "c3a4e282ac");
}

TEST(BigCodePageTextTest, MinusOneIsUtf16WithTheHighByteFirst) {
  EXPECT_EQ(TextOfNumber("41004220ac", -1), OLESTR("\u4100\u4220"));  // ac is left over
  EXPECT_EQ(TextOfNumber("4120ac", -1), OLESTR("\u4120"));
  EXPECT_EQ(TextOfNumber("d83dde00", -1), OLESTR("\xD83D\xDE00"));
  EXPECT_EQ(NumberOfText(OLESTR("\u4120A"), -1), "41200041");
  // The number drops a high byte of zero, so the text is not the same.
  EXPECT_EQ(NumberOfText(OLESTR("A\u20AC"), -1), "4120ac");
}

TEST(BigCodePageTextTest, OtherNegativeCodePagesAreUtf16WithTheLowByteFirst) {
  for (const LONG code_page : {-2, -3, -1000, -2147483647 - 1}) {
    EXPECT_EQ(TextOfNumber("4100ac20", code_page), OLESTR("A\u20AC"));
    EXPECT_EQ(TextOfNumber("4100ac2042", code_page), OLESTR("A\u20AC"));
    EXPECT_EQ(NumberOfText(OLESTR("A\u20AC"), code_page), "4100ac20");
  }
}

TEST(BigCodePageTextTest, EmptyTextIsZero) {
  for (const LONG code_page : {0, 65001, -1, -2}) {
    EXPECT_EQ(TextOfNumber("", code_page), Text());
    EXPECT_EQ(NumberOfText(Text(), code_page), "0");
    BigInt n(77);
    EXPECT_EQ(NumberFromCodePageText(n, nullptr, code_page), S_OK);
    EXPECT_EQ(Hex(n), "0");
  }
  EXPECT_EQ(TextOfNumber("41", -1), Text());
  EXPECT_EQ(TextOfNumber("41", -2), Text());
}

TEST(BigCodePageTextTest, UnknownCharacterSetsConvertTextToNothing) {
  EXPECT_EQ(TextOfNumber("616263", 12345), Text());
  EXPECT_EQ(NumberOfText(OLESTR("abc"), 12345), "0");
}

TEST(BigCodePageTextTest, ZeroCharactersAreCharacters) {
  const Text text(OLESTR("a\0b"), 3);
  EXPECT_EQ(NumberOfText(text, 0), "61");
  EXPECT_EQ(NumberOfText(text, -1), "6100000062");
  EXPECT_EQ(NumberOfText(text, -2), "610000006200");
  EXPECT_EQ(NumberOfText(Text(OLESTR("\0b"), 2), 1252), "0");
  EXPECT_EQ(TextOfNumber("610062", 0), text);
  EXPECT_EQ(TextOfNumber("610000006200", -2), text);
}

TEST(BigCodePageTextTest, CharactersThatTheSetLacksAreReplaced) {
  EXPECT_EQ(NumberOfText(OLESTR("a\u0416b"), 1252), "613f62");
  EXPECT_EQ(NumberOfText(Text(1, static_cast<OLECHAR>(0xD800)), 65001), "efbfbd");
  EXPECT_EQ(TextOfNumber("61ff62", 65001), OLESTR("a\uFFFDb"));
}

TEST(BigCodePageTextTest, OnlyWholeUnitsOfAnOddNumberOfBytesCount) {
  const OwnedBstr odd(SysAllocStringByteLen("a\0b\0c", 5));
  BigInt n(77);
  ASSERT_EQ(NumberFromCodePageText(n, odd.Get(), -2), S_OK);
  EXPECT_EQ(Hex(n), "61006200");
}

TEST(BigCodePageTextTest, ConversionsKeepTheSignFlag) {
  BigInt n = BigInt(1) - BigInt(2);
  const OwnedBstr text(SysAllocString(OLESTR("a")));
  ASSERT_EQ(NumberFromCodePageText(n, text.Get(), 0), S_OK);
  EXPECT_EQ(Hex(n), "-61");
  OwnedBstr out;
  ASSERT_EQ(NumberToCodePageText(n, 0, out.Put()), S_OK);
  EXPECT_EQ(Text(out.Get()), OLESTR("a"));
}

TEST(BigCodePageTextTest, FailuresLeaveNumberAndText) {
  EXPECT_EQ(NumberToCodePageText(BigInt(1), 0, nullptr), E_POINTER);
  const OwnedBstr text(SysAllocString(OLESTR("some text")));
  const BigInt large = BigHex("616263646566676869");
  for (const LONG code_page : {0, -1, -2}) {
    BSTR out = text.Get();
    if (kRuntimeFailsOnDemand) {
      MiroltaFailAllocationAfter(0);
      EXPECT_EQ(NumberToCodePageText(large, code_page, &out), E_OUTOFMEMORY);
      EXPECT_TRUE(MiroltaAllocationHasFailed());
      MiroltaFailAllocationAfter(-1);
      EXPECT_EQ(out, nullptr);
    }

    out = text.Get();
    HRESULT status = S_OK;
    {
      const FailAllocationsAfter fail(0);
      status = NumberToCodePageText(large, code_page, &out);
    }
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_EQ(out, nullptr);

    int failures = 0;
    for (long allowed = 0;; ++allowed) {
      BigInt n;
      {
        const FailAllocationsAfter fail(allowed);
        status = NumberFromCodePageText(n, text.Get(), code_page);
      }
      if (status == S_OK) break;
      ++failures;
      ASSERT_EQ(status, E_OUTOFMEMORY);
      ASSERT_TRUE(n.IsZero());
    }
    EXPECT_GE(failures, 2);
  }
}

}  // namespace
}  // namespace mirolta::test
