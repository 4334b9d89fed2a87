#include <gtest/gtest.h>

#include <string>

#include "platform.h"
#include "portable/test_hooks.h"

namespace mirolta {
namespace {

using Text = std::basic_string<OLECHAR>;

Text TextOf(BSTR text) {
  return Text(text, SysStringLen(text));
}

TEST(Bstr, HoldsLengthInBytesAndTerminator) {
  BSTR text = SysAllocString(OLESTR("text"));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 4u);
  EXPECT_EQ(SysStringByteLen(text), 8u);
  EXPECT_EQ(TextOf(text), OLESTR("text"));
  EXPECT_EQ(text[4], 0);
  UINT prefix = 0;
  memcpy(&prefix, reinterpret_cast<const char*>(text) - 4, sizeof prefix);
  EXPECT_EQ(prefix, 8u);
  SysFreeString(text);
}

TEST(Bstr, KeepsEmbeddedZeros) {
  const OLECHAR source[] = {'a', 0, 'b', 0, 'c', 'd'};
  BSTR text = SysAllocStringLen(source, 5);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 5u);
  EXPECT_EQ(TextOf(text), Text(source, 5));
  EXPECT_EQ(text[5], 0);
  SysFreeString(text);
}

TEST(Bstr, TakesBytesOfOddNumber) {
  BSTR text = SysAllocStringByteLen("abc", 3);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringByteLen(text), 3u);
  EXPECT_EQ(text[1], 'c');
  EXPECT_EQ(text[2], 0);  // a whole character of its own, as readers of the text expect
  EXPECT_EQ(SysStringLen(text), 1u);
  const char* bytes = reinterpret_cast<const char*>(text);
  EXPECT_EQ(std::string(bytes, 3), "abc");
  EXPECT_EQ(bytes[3], 0);
  EXPECT_EQ(bytes[4], 0);
  SysFreeString(text);
}

TEST(Bstr, NullTextIsEmpty) {
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  SysFreeString(nullptr);
  BSTR text = SysAllocStringLen(nullptr, 3);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(text[3], 0);
  SysFreeString(text);
}

TEST(Bstr, RefusesLengthsBeyondThePrefix) {
  EXPECT_EQ(SysAllocStringLen(OLESTR(""), 0x7FFFFFFF), nullptr);
  EXPECT_EQ(SysAllocStringLen(OLESTR(""), 0xFFFFFFFF), nullptr);
  EXPECT_EQ(SysAllocStringByteLen("", 0xFFFFFFFF), nullptr);
}

TEST(Bstr, ReallocatesFromItself) {
  BSTR text = SysAllocString(OLESTR("former text"));
  EXPECT_TRUE(SysReAllocStringLen(&text, text + 7, 4));
  EXPECT_EQ(TextOf(text), OLESTR("text"));
  EXPECT_TRUE(SysReAllocString(&text, text));
  EXPECT_EQ(TextOf(text), OLESTR("text"));
  SysFreeString(text);
}

TEST(Bstr, ReallocationWithoutSourceKeepsTheText) {
  BSTR text = SysAllocString(OLESTR("former"));
  EXPECT_TRUE(SysReAllocStringLen(&text, nullptr, 9));
  EXPECT_EQ(SysStringLen(text), 9u);
  EXPECT_EQ(Text(text, 6), OLESTR("former"));
  EXPECT_EQ(text[9], 0);
  EXPECT_TRUE(SysReAllocStringLen(&text, nullptr, 2));
  EXPECT_EQ(TextOf(text), OLESTR("fo"));
  EXPECT_TRUE(SysReAllocString(&text, nullptr));
  EXPECT_EQ(text, nullptr);
}

TEST(Bstr, FailedAllocationLeavesTheText) {
  BSTR text = SysAllocString(OLESTR("former"));
  MiroltaFailAllocationAfter(0);
  EXPECT_FALSE(SysReAllocString(&text, OLESTR("another")));
  EXPECT_TRUE(MiroltaAllocationHasFailed());
  EXPECT_EQ(TextOf(text), OLESTR("former"));
  SysFreeString(text);
}

TEST(AllocationHook, FailsOnceAfterTheCount) {
  MiroltaFailAllocationAfter(2);
  BSTR first = SysAllocString(OLESTR("1"));
  void* second = CoTaskMemAlloc(2);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_FALSE(MiroltaAllocationHasFailed());
  EXPECT_EQ(CoTaskMemRealloc(second, 3), nullptr);
  EXPECT_TRUE(MiroltaAllocationHasFailed());
  second = CoTaskMemRealloc(second, 3);
  EXPECT_NE(second, nullptr);
  MiroltaFailAllocationAfter(0);
  MiroltaFailAllocationAfter(-1);
  EXPECT_FALSE(MiroltaAllocationHasFailed());
  void* third = CoTaskMemAlloc(0);
  EXPECT_NE(third, nullptr);
  EXPECT_EQ(CoTaskMemRealloc(third, 0), nullptr);
  CoTaskMemFree(second);
  CoTaskMemFree(nullptr);
  SysFreeString(first);
}

}  // namespace
}  // namespace mirolta
