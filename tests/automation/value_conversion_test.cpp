#include "value_conversion.h"

#include <gtest/gtest.h>

#include <map>

#include "memory_watch.h"
#include "runtime_allocations.h"
#include "value_cases.h"

namespace mirolta::test {
namespace {

struct Outcome {
  HRESULT status;
  Bytes bytes;
  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  out << std::hex << static_cast<uint32_t>(outcome.status) << " [";
  for (const uint8_t byte : outcome.bytes) out << ' ' << int{byte};
  return out << " ]";
}

Outcome Convert(const VARIANT& value, LONG code_page) {
  ByteString bytes;
  EXPECT_TRUE(bytes.Allocate(3));
  const HRESULT status = VariantToBytes(value, code_page, &bytes);
  EXPECT_EQ(bytes.IsPresent(), bytes.Count() != 0);
  return {status, Bytes(bytes.Data(), bytes.Data() + bytes.Count())};
}

Outcome ConvertStrictly(const VARIANT& value) {
  ByteString bytes;
  EXPECT_TRUE(bytes.Allocate(3));
  const HRESULT status = VariantToByteArrayBytes(value, &bytes);
  EXPECT_EQ(bytes.IsPresent(), bytes.Count() != 0);
  return {status, Bytes(bytes.Data(), bytes.Data() + bytes.Count())};
}

TEST(VariantToBytes, EachKindOfValueGivesItsBytesOrItsStatus) {
  ValueCases values;
  const Bytes none;
  const std::map<std::string, Outcome> expected = {
      {"text", {S_OK, {'t', 'e', 0xE4, 'x', 't'}}},
      {"text with zero", {S_OK, BytesOf("ab")}},
      {"empty text", {S_OK, none}},
      {"null text", {S_OK, none}},
      {"empty", {S_OK, none}},
      {"null", {DISP_E_TYPEMISMATCH, none}},
      {"number", {S_OK, BytesOf("255")}},
      {"array", {S_OK, {0, 1, 2, 0xFF}}},
      {"empty array", {S_OK, none}},
      {"null array", {E_POINTER, none}},
      {"array without data", {E_INVALIDARG, none}},
      {"array of words without data", {E_INVALIDARG, none}},
      {"object with array without data", {E_INVALIDARG, none}},
      {"reference to array without data", {E_INVALIDARG, none}},
      {"value reference to array without data", {E_INVALIDARG, none}},
      {"array of words", {DISP_E_TYPEMISMATCH, none}},
      {"array of eight bytes", {DISP_E_TYPEMISMATCH, none}},
      {"array of unsigned", {DISP_E_TYPEMISMATCH, none}},
      {"array of shorts", {DISP_E_TYPEMISMATCH, none}},
      {"null array of words", {DISP_E_TYPEMISMATCH, none}},
      {"object with text", {S_OK, BytesOf("abc")}},
      {"object with array", {S_OK, {5, 6}}},
      {"failing object", {DISP_E_MEMBERNOTFOUND, none}},
      {"object without dispatch", {E_FAIL, none}},
      {"null object", {E_FAIL, none}},
      {"array reference", {S_OK, {0, 1, 2, 0xFF}}},
      {"empty array reference", {S_OK, none}},
      {"null array reference", {E_POINTER, none}},
      {"words reference", {DISP_E_TYPEMISMATCH, none}},
      {"shorts reference", {DISP_E_TYPEMISMATCH, none}},
      {"text reference", {S_OK, {'t', 'e', 0xE4, 'x', 't'}}},
      {"null text reference", {S_OK, none}},
      {"number reference", {S_OK, BytesOf("-12")}},
      {"value reference to array", {S_OK, {0, 1, 2, 0xFF}}},
      {"value reference to text", {S_OK, {'t', 'e', 0xE4, 'x', 't'}}},
      {"value reference to array reference", {S_OK, {0, 1, 2, 0xFF}}},
#ifndef _WIN32
      {"array reference to nowhere", {E_INVALIDARG, none}},
      {"text reference to nowhere", {E_INVALIDARG, none}},
      {"value reference to nowhere", {E_INVALIDARG, none}},
#endif
  };
  ASSERT_EQ(values.All().size(), expected.size());
  for (const auto& row : values.All()) {
    EXPECT_EQ(Convert(row.value, 1252), expected.at(row.name)) << row.name;
  }
  EXPECT_EQ(values.text_object_.references, 2u);
  EXPECT_EQ(values.array_->parray->cLocks, 0u);
}

TEST(VariantToBytes, TextIsEncodedByTheCodePage) {
  const TestValue text = TextValue(OLESTR("AB"));
  EXPECT_EQ(Convert(text, 0), (Outcome{S_OK, BytesOf("AB")}));
  EXPECT_EQ(Convert(text, -1), (Outcome{S_OK, {0x41, 0, 0x42, 0}}));
  EXPECT_EQ(Convert(text, -2), (Outcome{S_OK, {0, 0x41, 0, 0x42}}));
  EXPECT_EQ(Convert(text, 4711), (Outcome{S_OK, {}}));
  // An array's bytes pass through no code page.
  EXPECT_EQ(Convert(BytesValue({0xE4}), -2), (Outcome{S_OK, {0xE4}}));
}

TEST(VariantToBytes, WithoutPlaceOrMemoryThereAreNoBytes) {
  EXPECT_EQ(VariantToBytes(NumberValue(1), 0, nullptr), E_POINTER);
  const TestValue text = TextValue(OLESTR("abc"));
  const TestValue array = BytesValue({1, 2});
  for (const VARIANT& value :
       {static_cast<const VARIANT&>(text), static_cast<const VARIANT&>(array)}) {
    ByteString bytes;
    HRESULT status = S_OK;
    {
      FailAllocationsAfter fail(0);
      status = VariantToBytes(value, 0, &bytes);
    }
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_FALSE(bytes.IsPresent());
    if (!kRuntimeFailsOnDemand) continue;
    MiroltaFailAllocationAfter(0);
    status = VariantToBytes(value, 0, &bytes);
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(status, E_OUTOFMEMORY);  // of the private copy
    EXPECT_FALSE(bytes.IsPresent());
  }
}

// The text ends at its first zero character, and the terminator completes an odd last byte.
TEST(VariantToBytes, ATextOfAnOddNumberOfBytesGoesOnToItsZero) {
  TestValue odd(VT_BSTR);
  odd->bstrVal = SysAllocStringByteLen("a\0b\0c", 5);
  EXPECT_EQ(Convert(odd, -1), (Outcome{S_OK, {'a', 0, 'b', 0, 'c', 0}}));
  EXPECT_EQ(Convert(odd, 1252), (Outcome{S_OK, BytesOf("abc")}));
}

TEST(VariantToByteArrayBytes, TakesByteArraysOnly) {
  ValueCases values;
  const Bytes none;
  const std::map<std::string, Outcome> taken = {
      {"empty", {S_OK, none}},
      {"array", {S_OK, {0, 1, 2, 0xFF}}},
      {"empty array", {S_OK, none}},
      {"array without data", {E_INVALIDARG, none}},
      {"array of words without data", {E_INVALIDARG, none}},
      {"reference to array without data", {E_INVALIDARG, none}},
      {"value reference to array without data", {E_INVALIDARG, none}},
      {"array of words", {S_OK, {1, 2, 3}}},
      {"array of eight bytes", {S_OK, {9, 8}}},
      {"array of unsigned", {S_OK, {9, 8}}},
      {"array reference", {S_OK, {0, 1, 2, 0xFF}}},
      {"empty array reference", {S_OK, none}},
      {"words reference", {S_OK, {1, 2, 3}}},
      {"value reference to array", {S_OK, {0, 1, 2, 0xFF}}},
      {"value reference to array reference", {S_OK, {0, 1, 2, 0xFF}}},
#ifndef _WIN32
      {"array reference to nowhere", {E_INVALIDARG, none}},
      {"text reference to nowhere", {E_INVALIDARG, none}},
      {"value reference to nowhere", {E_INVALIDARG, none}},
#endif
  };
  size_t seen = 0;
  for (const auto& row : values.All()) {
    const auto found = taken.find(row.name);
    const Outcome expected =
        found != taken.end() ? found->second : Outcome{DISP_E_TYPEMISMATCH, none};
    seen += found != taken.end();
    EXPECT_EQ(ConvertStrictly(row.value), expected) << row.name;
  }
  EXPECT_EQ(seen, taken.size());
  EXPECT_EQ(values.array_object_.reads, 0);
  EXPECT_EQ(VariantToByteArrayBytes(NumberValue(1), nullptr), E_POINTER);
}

TEST(VariantToByteArrayBytes, TheMaskLetsFourTypesPass) {
  for (VARTYPE type = 0; type < 32; ++type) {
    const bool passes = type == VT_UI1 || type == VT_UI4 || type == VT_UI8 || type == VT_UINT ||
                        type == VT_HRESULT || type == VT_SAFEARRAY || type == VT_USERDEFINED ||
                        type == 31;
    EXPECT_EQ(PassesAsByteArray(static_cast<VARTYPE>(VT_ARRAY | type)), passes) << type;
    EXPECT_FALSE(PassesAsByteArray(type));
  }
}

}  // namespace
}  // namespace mirolta::test
