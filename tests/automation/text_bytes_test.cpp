#include "text_bytes.h"

#include <gtest/gtest.h>

#include "memory_watch.h"
#include "owned_value.h"
#include "runtime_allocations.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

constexpr LONG kUtf8 = 65001;
constexpr LONG kUnknownCodePage = 4711;

Bytes Content(const ByteString& bytes) {
  return Bytes(bytes.Data(), bytes.Data() + bytes.Count());
}

Bytes FromWide(const OLECHAR* text, LONG code_page) {
  ByteString bytes;
  EXPECT_EQ(WideToBytes(text, code_page, &bytes), S_OK);
  // No bytes are never present.
  EXPECT_EQ(bytes.IsPresent(), bytes.Count() != 0);
  return Content(bytes);
}

std::basic_string<OLECHAR> ToWide(const Bytes& bytes, LONG code_page) {
  OwnedBstr text;
  EXPECT_EQ(BytesToWide(bytes.data(), static_cast<uint32_t>(bytes.size()), code_page, text.Put()),
            S_OK);
  EXPECT_NE(text.Get(), nullptr);
  return std::basic_string<OLECHAR>(text.Get(), SysStringLen(text.Get()));
}

TEST(WideToBytes, TakesUtf16UnitsInEitherOrder) {
  EXPECT_EQ(FromWide(OLESTR("AB"), -1), (Bytes{0x41, 0, 0x42, 0}));
  EXPECT_EQ(FromWide(OLESTR("AB"), -2), (Bytes{0, 0x41, 0, 0x42}));
  EXPECT_EQ(FromWide(OLESTR("\u20AC"), -1), (Bytes{0xAC, 0x20}));
  EXPECT_EQ(FromWide(OLESTR("\u20AC"), INT32_MIN), (Bytes{0x20, 0xAC}));
}

TEST(WideToBytes, ConvertsThroughCharacterSets) {
  EXPECT_EQ(FromWide(OLESTR("abc"), 0), BytesOf("abc"));
  EXPECT_EQ(FromWide(OLESTR("\u00E4"), kUtf8), (Bytes{0xC3, 0xA4}));
  EXPECT_EQ(FromWide(OLESTR("\u00E4"), 1252), (Bytes{0xE4}));
}

TEST(WideToBytes, WhatTheSetLacksIsReplacedNotRefused) {
  EXPECT_EQ(FromWide(OLESTR("a\u0416b"), 1252), BytesOf("a?b"));
  EXPECT_EQ(FromWide(OLESTR("a\u0416b"), 20127), BytesOf("a?b"));
  // An unpaired surrogate.
  const OLECHAR half[] = {'a', static_cast<OLECHAR>(0xD800), 'b', 0};
  EXPECT_EQ(FromWide(half, kUtf8), (Bytes{'a', 0xEF, 0xBF, 0xBD, 'b'}));
  EXPECT_EQ(FromWide(half, -1), (Bytes{'a', 0, 0, 0xD8, 'b', 0}));
}

TEST(WideToBytes, NothingToConvertGivesNoBytes) {
  for (const LONG code_page : {-2, -1, 0, static_cast<int>(kUtf8)}) {
    EXPECT_EQ(FromWide(nullptr, code_page), Bytes());
    EXPECT_EQ(FromWide(OLESTR(""), code_page), Bytes());
  }
  EXPECT_EQ(FromWide(OLESTR("abc"), kUnknownCodePage), Bytes());
}

TEST(WideToBytes, EndsAtTheFirstZero) {
  for (const LONG code_page : {0, static_cast<int>(kUtf8)}) {
    EXPECT_EQ(FromWide(OLESTR("ab\0cd"), code_page), BytesOf("ab"));
  }
  EXPECT_EQ(FromWide(OLESTR("ab\0cd"), -1), (Bytes{'a', 0, 'b', 0}));
  EXPECT_EQ(FromWide(OLESTR("\0cd"), -2), Bytes());
}

TEST(WideToBytes, FailuresLeaveNoBytes) {
  EXPECT_EQ(WideToBytes(OLESTR("a"), 0, nullptr), E_POINTER);
  for (const LONG code_page : {-1, 0}) {
    ByteString bytes;
    ASSERT_TRUE(bytes.Allocate(3));
    HRESULT status = S_OK;
    {
      FailAllocationsAfter fail(0);
      status = WideToBytes(OLESTR("abc"), code_page, &bytes);
    }
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_FALSE(bytes.IsPresent());
  }
}

TEST(BytesToWide, ReadsUtf16UnitsInEitherOrder) {
  EXPECT_EQ(ToWide({0x41, 0, 0xAC, 0x20}, -1), OLESTR("A\u20AC"));
  EXPECT_EQ(ToWide({0, 0x41, 0x20, 0xAC}, -2), OLESTR("A\u20AC"));
  EXPECT_EQ(ToWide({0x41, 0, 0x42}, -1), OLESTR("A"));  // an odd last byte is dropped
  EXPECT_EQ(ToWide({0x41}, -1), OLESTR(""));
}

TEST(BytesToWide, ConvertsThroughCharacterSets) {
  EXPECT_EQ(ToWide(BytesOf("abc"), 0), OLESTR("abc"));
  EXPECT_EQ(ToWide({0xC3, 0xA4}, kUtf8), OLESTR("\u00E4"));
  EXPECT_EQ(ToWide({0xE4}, 1252), OLESTR("\u00E4"));
}

TEST(BytesToWide, BytesThatAreNoCharacterAreReplacedNotRefused) {
  EXPECT_EQ(ToWide({'a', 0xFF, 'b'}, kUtf8), OLESTR("a\uFFFDb"));
  EXPECT_EQ(ToWide({'a', 0xC3}, kUtf8), OLESTR("a\uFFFD"));
}

TEST(BytesToWide, EndsAtTheFirstZero) {
  EXPECT_EQ(ToWide({'a', 0, 'b'}, 0), OLESTR("a"));
  EXPECT_EQ(ToWide({'a', 0, 0, 0, 'b', 0}, -1), OLESTR("a"));
}

TEST(BytesToWide, NothingToConvertGivesEmptyText) {
  for (const LONG code_page : {-2, -1, 0}) EXPECT_EQ(ToWide({}, code_page), OLESTR(""));
  EXPECT_EQ(ToWide(BytesOf("abc"), kUnknownCodePage), OLESTR(""));
  OwnedBstr text;
  EXPECT_EQ(BytesToWide(nullptr, 5, 0, text.Put()), S_OK);
  ASSERT_NE(text.Get(), nullptr);
  EXPECT_EQ(SysStringLen(text.Get()), 0u);
}

TEST(BytesToWide, FailuresLeaveNoText) {
  const uint8_t bytes[] = {'a', 0};
  EXPECT_EQ(BytesToWide(bytes, 2, 0, nullptr), E_POINTER);
  BSTR const left = reinterpret_cast<BSTR>(1);
  for (const LONG code_page : {-1, 0}) {
    BSTR text = left;
    HRESULT status = S_OK;
    {
      FailAllocationsAfter fail(0);
      status = BytesToWide(bytes, 2, code_page, &text);
    }
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_EQ(text, nullptr);
  }
  for (const uint32_t count : {0u, 2u}) {
    if (!kRuntimeFailsOnDemand) break;
    BSTR text = left;
    MiroltaFailAllocationAfter(0);
    const HRESULT status = BytesToWide(bytes, count, -1, &text);
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_EQ(text, nullptr);
  }
}

TEST(BytesToWide, TextOnTheWayIsWiped) {
  const Bytes secret = BytesOf("the secret of this test");
  Bytes wide;
  for (const uint8_t c : secret) wide.insert(wide.end(), {c, 0});
  WatchFreedMemory watch(wide.data(), wide.size());
  ToWide(wide, -1);
  EXPECT_GT(watch.Freed(), 0);
  // The one block is the text that the test made of the result.
  EXPECT_LE(watch.FreedWithSecret(), 1);
}

TEST(BytesToHex, WritesUppercaseDigitsAndATerminator) {
  const uint8_t bytes[] = {0x0F, 0xA0, 0x9B, 0xFF};
  OLECHAR text[10];
  for (OLECHAR& c : text) c = 'x';
  EXPECT_EQ(BytesToHex(bytes, 4, text), S_OK);
  EXPECT_EQ(std::basic_string<OLECHAR>(text), OLESTR("0FA0"));
  EXPECT_EQ(text[5], 'x');
  EXPECT_EQ(BytesToHex(bytes, 8, text), S_OK);
  EXPECT_EQ(std::basic_string<OLECHAR>(text), OLESTR("0FA09BFF"));
  EXPECT_EQ(BytesToHex(bytes, 0, text), S_OK);
  EXPECT_EQ(text[0], 0);
}

TEST(BytesToHex, RefusesBadArguments) {
  const uint8_t bytes[] = {0x0F};
  OLECHAR text[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(BytesToHex(nullptr, 2, text), E_POINTER);
  EXPECT_EQ(BytesToHex(bytes, 2, nullptr), E_POINTER);
  EXPECT_EQ(BytesToHex(nullptr, 1, text), E_POINTER);
  EXPECT_EQ(BytesToHex(bytes, 1, text), E_INVALIDARG);
  EXPECT_EQ(BytesToHex(bytes, -1, text), E_INVALIDARG);
  EXPECT_EQ(BytesToHex(bytes, -2, text), E_INVALIDARG);
  for (const OLECHAR c : text) EXPECT_EQ(c, 'x');
}

}  // namespace
}  // namespace mirolta::test
