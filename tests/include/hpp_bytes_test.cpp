// Spans, byte arrays and hexadecimal text of mirolta.hpp.
#include <gtest/gtest.h>

#include <list>
#include <mirolta.hpp>
#include <numeric>
#ifdef __cpp_lib_span
  #include <span>
#endif

#include "hpp_testing.h"

namespace {

using mirolta::Bytes;
using mirolta::ByteSpan;
using mirolta::WritableByteSpan;

std::string HexOf(ByteSpan span) {
  return mirolta::ToHex(span);
}

TEST(HppByteSpanTest, IsMadeOfContainersOfEveryKindOfByte) {
  EXPECT_EQ(HexOf(std::vector<std::uint8_t>{1, 2}), "0102");
  EXPECT_EQ(HexOf(std::vector<signed char>{-1, 2}), "ff02");
  EXPECT_EQ(HexOf(std::array<std::byte, 2>{std::byte{3}, std::byte{4}}), "0304");
  EXPECT_EQ(HexOf(std::string("a\0b", 3)), "610062");
  EXPECT_EQ(HexOf(std::string_view("ab")), "6162");
  const std::uint8_t array[] = {5, 0, 6};
  EXPECT_EQ(HexOf(array), "050006");
  EXPECT_EQ(HexOf(Bytes(array)), "050006");
  EXPECT_EQ(HexOf({}), "");
#ifdef __cpp_lib_span
  EXPECT_EQ(HexOf(std::span<const std::uint8_t>(array)), "050006");
  EXPECT_EQ(HexOf(std::as_bytes(std::span<const std::uint8_t, 3>(array))), "050006");
  const ByteSpan ours(array);
  EXPECT_EQ(std::span<const std::uint8_t>(ours).size(), 3u);
#endif
}

TEST(HppByteSpanTest, OfALiteralHasNoTerminator) {
  EXPECT_EQ(HexOf("ab"), "6162");
  const char buffer[8] = "abc";
  EXPECT_EQ(HexOf(buffer), "616263");
  const char* const text = "abcd";
  EXPECT_EQ(HexOf(text), "61626364");
}

TEST(HppByteSpanTest, IsNotMadeOfOtherElementsNorOfWhatIsNotContiguous) {
  static_assert(!std::is_constructible_v<ByteSpan, std::vector<int>>);
  static_assert(!std::is_constructible_v<ByteSpan, std::list<char>>);
  static_assert(!std::is_constructible_v<ByteSpan, std::vector<bool>>);
  static_assert(!std::is_constructible_v<ByteSpan, std::wstring>);
  static_assert(!std::is_constructible_v<WritableByteSpan, const std::vector<std::uint8_t>&>);
  static_assert(!std::is_constructible_v<WritableByteSpan, const char*>);
  static_assert(std::is_constructible_v<WritableByteSpan, std::vector<std::uint8_t>&>);
}

TEST(HppByteSpanTest, HasPartsAndElements) {
  std::vector<std::uint8_t> bytes = {1, 2, 3, 4};
  const WritableByteSpan span(bytes);
  span[1] = 9;
  EXPECT_EQ(bytes[1], 9);
  EXPECT_EQ(HexOf(span.First(2)), "0109");
  EXPECT_EQ(HexOf(span.From(3)), "04");
  EXPECT_TRUE(span.From(4).empty());
  EXPECT_EQ(std::accumulate(span.begin(), span.end(), 0), 17);
}

TEST(HppByteSpanTest, ComparesEveryByte) {
  const Bytes bytes = mirolta::FromHex("00112233445566778899");
  EXPECT_TRUE(mirolta::EqualInConstantTime(bytes, Bytes(bytes)));
  EXPECT_TRUE(mirolta::EqualInConstantTime({}, {}));
  EXPECT_FALSE(mirolta::EqualInConstantTime(bytes, ByteSpan(bytes).First(9)));
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    Bytes other(bytes);
    other[i] ^= 0x80;
    EXPECT_FALSE(mirolta::EqualInConstantTime(bytes, other)) << i;
    EXPECT_NE(bytes, other) << i;
  }
}

TEST(HppBytesTest, HoldsACopyWithTheLayoutOfAnAutomationArray) {
  const std::uint8_t array[] = {1, 2, 3};
  const Bytes bytes(array);
  ASSERT_EQ(bytes.size(), 3u);
  EXPECT_NE(bytes.data(), array);
  LONG upper = 0;
  EXPECT_EQ(SafeArrayGetUBound(bytes.Get(), 1, &upper), S_OK);
  EXPECT_EQ(upper, 2);
  EXPECT_EQ(bytes.ToVector(), std::vector<std::uint8_t>({1, 2, 3}));
  EXPECT_EQ(std::accumulate(bytes.begin(), bytes.end(), 0), 6);
  EXPECT_EQ(bytes[2], 3);
}

TEST(HppBytesTest, IsEmptyWithoutAnArray) {
  const Bytes none;
  EXPECT_TRUE(none.empty());
  EXPECT_EQ(none.Get(), nullptr);
  EXPECT_EQ(none.begin(), none.end());
  EXPECT_EQ(none, Bytes(ByteSpan()));
  EXPECT_TRUE(none.ToVector().empty());
}

TEST(HppBytesTest, CopiesAreIndependentAndMovesLeaveNothing) {
  Bytes first = mirolta::FromHex("0102");
  Bytes copy = first;
  copy[0] = 9;
  EXPECT_EQ(mirolta::ToHex(first), "0102");
  const std::uint8_t* const place = first.data();
  Bytes moved = std::move(first);
  EXPECT_EQ(moved.data(), place);
  EXPECT_TRUE(first.empty());
  copy = moved;
  EXPECT_EQ(copy, moved);
  copy = std::move(moved);
  EXPECT_EQ(copy.data(), place);
  copy = *&copy;
  EXPECT_EQ(mirolta::ToHex(copy), "0102");
}

TEST(HppBytesTest, ConvertsToAnArrayOfItsSizeOnly) {
  const Bytes bytes = mirolta::FromHex("010203");
  const std::array<std::uint8_t, 3> array = bytes;
  EXPECT_EQ(array[2], 3);
  EXPECT_EQ(bytes.ToArray<3>(), array);
  const auto wrong = bytes.TryToArray<4>();
  ASSERT_FALSE(wrong);
  EXPECT_EQ(wrong.Failure().Number(), DISP_E_BADINDEX);
  EXPECT_STREQ(wrong.Failure().what(), "There are 3 bytes, not 4.");
  EXPECT_THROW((void)bytes.ToArray<2>(), mirolta::Error);
}

TEST(HppBytesTest, TakesOverByteArraysAndNoOthers) {
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 2);
  mirolta::Result<Bytes> bytes = Bytes::TryAttach(array);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->Get(), array);
  EXPECT_EQ(SafeArrayDestroy(bytes->Detach()), S_OK);
  EXPECT_TRUE(bytes->empty());
  ASSERT_TRUE(Bytes::TryAttach(nullptr));
  const auto wide = Bytes::TryAttach(SafeArrayCreateVector(VT_I4, 0, 2));
  ASSERT_FALSE(wide);
  EXPECT_EQ(wide.Failure().Number(), DISP_E_TYPEMISMATCH);
  SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
  EXPECT_FALSE(Bytes::TryAttach(SafeArrayCreate(VT_UI1, 2, bounds)));
}

TEST(HppBytesTest, RefusesMoreThanAnArrayHolds) {
  if (sizeof(std::size_t) == 4) return;
  const auto much = Bytes::TryCreate(static_cast<std::size_t>(0x80000000u));
  ASSERT_FALSE(much);
  EXPECT_EQ(much.Failure().Number(), E_OUTOFMEMORY);
}

// A locked array is not freed, so that its memory may be read.
TEST(HppBytesTest, WipesWhatItGivesBack) {
  SAFEARRAY* arrays[3];
  {
    Bytes destroyed = mirolta::FromHex("a5a5a5a5");
    Bytes replaced = destroyed;
    Bytes cleared = destroyed;
    Bytes* const all[] = {&destroyed, &replaced, &cleared};
    for (int i = 0; i < 3; ++i) {
      arrays[i] = all[i]->Get();
      ASSERT_EQ(SafeArrayLock(arrays[i]), S_OK);
    }
    replaced = Bytes();
    cleared.Clear();
    EXPECT_TRUE(cleared.empty());
  }
  for (SAFEARRAY* const array : arrays) {
    const auto* const bytes = static_cast<const std::uint8_t*>(array->pvData);
    EXPECT_EQ(std::count(bytes, bytes + 4, 0), 4);
    SafeArrayUnlock(array);
    SafeArrayDestroy(array);
  }
}

TEST(HppHexTest, IsLowercaseAndReadInBothCases) {
  const Bytes bytes = mirolta::FromHex("00fF10aBcD");
  EXPECT_EQ(mirolta::ToHex(bytes), "00ff10abcd");
  EXPECT_TRUE(mirolta::FromHex("").empty());
  for (int value = 0; value < 256; ++value) {
    const std::uint8_t one[] = {static_cast<std::uint8_t>(value)};
    EXPECT_EQ(mirolta::FromHex(mirolta::ToHex(one)), Bytes(one));
  }
}

TEST(HppHexTest, RefusesWhatIsNotPairsOfDigits) {
  for (const char* const text :
       {"0", "012", "0g", "g0", " 00", "0x", "/0", ":0", "@0", "`0", "0G"}) {
    const auto bytes = mirolta::TryFromHex(text);
    ASSERT_FALSE(bytes) << text;
    EXPECT_EQ(bytes.Failure().Number(), E_INVALIDARG) << text;
  }
  EXPECT_THROW((void)mirolta::FromHex("xy"), mirolta::Error);
}

}  // namespace
