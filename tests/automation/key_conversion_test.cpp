#include "key_conversion.h"

#include <gtest/gtest.h>

#include "memory_watch.h"
#include "runtime_allocations.h"
#include "value_cases.h"

namespace mirolta::test {
namespace {

Bytes KeyOf(const VARIANT& value, LONG code_page) {
  ByteString key;
  EXPECT_EQ(KeyFromVariant(value, code_page, &key), S_OK);
  EXPECT_TRUE(key.IsPresent());
  return Bytes(key.Data(), key.Data() + key.Count());
}

HRESULT Refusal(const VARIANT& value, LONG code_page) {
  ByteString key;
  EXPECT_TRUE(key.Allocate(2));
  const HRESULT status = KeyFromVariant(value, code_page, &key);
  EXPECT_FALSE(key.IsPresent());
  return status;
}

TEST(KeyFromVariant, ByteArraysAreTakenAsTheyAre) {
  TestValue array = BytesValue({0, 0xE4, 0, 7}, 5);
  for (const LONG code_page : {-2, -1, 0, 4711}) {
    EXPECT_EQ(KeyOf(array, code_page), (Bytes{0, 0xE4, 0, 7}));
    EXPECT_EQ(KeyOf(ReferenceTo(VT_ARRAY | VT_UI1, &array->parray), code_page),
              (Bytes{0, 0xE4, 0, 7}));
    EXPECT_EQ(KeyOf(ReferenceTo(VT_VARIANT, &array), code_page), (Bytes{0, 0xE4, 0, 7}));
  }
}

TEST(KeyFromVariant, ArraysOfTwoDimensionsAreKeysOnlyWhereThatIsAllowed) {
  SAFEARRAYBOUND bounds[] = {{4, 0}, {2, 0}};
  TestValue array(VT_ARRAY | VT_UI1);
  array->parray = SafeArrayCreate(VT_UI1, 2, bounds);
  std::memcpy(array->parray->pvData, "12345678", 8);
  ByteString key;
  for (const VARIANT& value :
       {static_cast<const VARIANT&>(array), ReferenceTo(VT_ARRAY | VT_UI1, &array->parray)}) {
    EXPECT_EQ(KeyFromVariant(value, 0, &key, KeyArrays::kOneDimension), DISP_E_TYPEMISMATCH);
    EXPECT_FALSE(key.IsPresent());
    EXPECT_EQ(KeyFromVariant(value, 0, &key), S_OK);
    EXPECT_EQ(Bytes(key.Data(), key.Data() + key.Count()), BytesOf("1234"));
  }
  EXPECT_EQ(KeyFromVariant(BytesValue({7}), 0, &key, KeyArrays::kOneDimension), S_OK);
  EXPECT_EQ(key.Count(), 1u);
}

TEST(KeyFromVariant, NegativeCodePagesTakeUnitsLowByteFirst) {
  const TestValue text = TextValue(OLESTR("A\0\u20AC"));
  for (const LONG code_page : {-1, -2, INT32_MIN}) {
    EXPECT_EQ(KeyOf(text, code_page), (Bytes{0x41, 0, 0, 0, 0xAC, 0x20}));
  }
}

TEST(KeyFromVariant, CharacterSetsLeaveOutTheTerminator) {
  EXPECT_EQ(KeyOf(TextValue(OLESTR("key")), 0), BytesOf("key"));
  EXPECT_EQ(KeyOf(TextValue(OLESTR("k\u00E4y")), 1252), (Bytes{'k', 0xE4, 'y'}));
  EXPECT_EQ(KeyOf(TextValue(OLESTR("k\u00E4y")), 65001), (Bytes{'k', 0xC3, 0xA4, 'y'}));
  EXPECT_EQ(KeyOf(TextValue(OLESTR("ab\0cd")), 0), BytesOf("ab"));
  // A null text is an empty one.
  TestValue null_text(VT_BSTR);
  null_text->bstrVal = nullptr;
  EXPECT_EQ(KeyOf(null_text, 0), Bytes());
  EXPECT_EQ(KeyOf(TextValue(OLESTR("")), 0), Bytes());
}

TEST(KeyFromVariant, WhatTheSetLacksIsReplacedNotRefused) {
  EXPECT_EQ(KeyOf(TextValue(OLESTR("a\u0416b")), 1252), BytesOf("a?b"));
  TestValue half(VT_BSTR);
  half->bstrVal = SysAllocStringLen(OLESTR("a?b"), 3);
  half->bstrVal[1] = static_cast<OLECHAR>(0xD800);
  EXPECT_EQ(KeyOf(half, 65001), (Bytes{'a', 0xEF, 0xBF, 0xBD, 'b'}));
}

TEST(KeyFromVariant, ATextOfAnOddNumberOfBytesGivesItsWholeUnits) {
  TestValue odd(VT_BSTR);
  odd->bstrVal = SysAllocStringByteLen("a\0b\0c", 5);
  for (const LONG code_page : {-1, -2}) {
    EXPECT_EQ(KeyOf(odd, code_page), (Bytes{'a', 0, 'b', 0})) << code_page;
  }
}

TEST(KeyFromVariant, OtherValuesGoThroughTheirText) {
  LONG number = 255;
  EXPECT_EQ(KeyOf(NumberValue(255), 0), BytesOf("255"));
  EXPECT_EQ(KeyOf(ReferenceTo(VT_I4, &number), -1), (Bytes{'2', 0, '5', 0, '5', 0}));
  FakeObject object(TextValue(OLESTR("abc")));
  EXPECT_EQ(KeyOf(ObjectValue(&object), 0), BytesOf("abc"));
}

TEST(KeyFromVariant, AnObjectsByteArrayIsNotTakenAsItIs) {
  // The platform converts it to text, byte for byte.
  FakeObject object(BytesValue({'a', 0, 'b', 0}));
  EXPECT_EQ(KeyOf(ObjectValue(&object), 0), BytesOf("ab"));
}

TEST(KeyFromVariant, AnEmptyTextIsAPresentKey) {
  for (const LONG code_page : {-2, -1, 0, 1252}) {
    EXPECT_EQ(KeyOf(TextValue(OLESTR("")), code_page), Bytes());
    EXPECT_EQ(KeyOf(TestValue(VT_BSTR), code_page), Bytes());
    EXPECT_EQ(KeyOf(TestValue(), code_page), Bytes());  // VT_EMPTY has the empty text
  }
}

TEST(KeyFromVariant, AnEmptyArrayIsNoKey) {
  ByteString key;
  EXPECT_EQ(KeyFromVariant(BytesValue({}), 0, &key), S_OK);
  EXPECT_FALSE(key.IsPresent());
}

TEST(KeyFromVariant, ValuesThatAreNoKeyAreRefused) {
  EXPECT_EQ(KeyFromVariant(NumberValue(1), 0, nullptr), E_POINTER);
  EXPECT_EQ(Refusal(TextValue(OLESTR("abc")), 4711), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Refusal(TextValue(OLESTR("")), 4711), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Refusal(TestValue(VT_NULL), 0), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Refusal(ArrayValue(VT_UI4, 2, {1, 2}), 0), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Refusal(TestValue(VT_ARRAY | VT_UI1), 0), E_POINTER);
  FakeObject object;
  object.has_dispatch = false;
  EXPECT_EQ(Refusal(UnknownValue(&object), 0), DISP_E_TYPEMISMATCH);
}

TEST(KeyFromVariant, WithoutMemoryThereIsNoKey) {
  const TestValue text = TextValue(OLESTR("abc"));
  const TestValue array = BytesValue({1, 2});
  const struct {
    const VARIANT& value;
    LONG code_page;
  } rows[] = {{text, -1}, {text, 0}, {array, 0}};
  for (const auto& row : rows) {
    ByteString key;
    HRESULT status = S_OK;
    {
      FailAllocationsAfter fail(0);
      status = KeyFromVariant(row.value, row.code_page, &key);
    }
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_FALSE(key.IsPresent());
    if (!kRuntimeFailsOnDemand) continue;
    MiroltaFailAllocationAfter(0);
    status = KeyFromVariant(row.value, row.code_page, &key);
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_FALSE(key.IsPresent());
  }
}

}  // namespace
}  // namespace mirolta::test
