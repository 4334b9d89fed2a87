#include "array_bytes.h"

#include <gtest/gtest.h>

#include "memory_watch.h"
#include "runtime_allocations.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

Bytes Content(const ByteString& bytes) {
  return Bytes(bytes.Data(), bytes.Data() + bytes.Count());
}

TEST(SafeArrayToBytes, CopiesFromTheFirstElement) {
  for (const LONG lower : {0, 1, -5, INT32_MAX - 3, INT32_MIN}) {
    TestValue value = BytesValue({1, 2, 3}, lower);
    ByteString bytes;
    EXPECT_EQ(SafeArrayToBytes(value->parray, &bytes), S_OK);
    EXPECT_EQ(Content(bytes), (Bytes{1, 2, 3}));
    EXPECT_EQ(value->parray->cLocks, 0u);
  }
}

TEST(SafeArrayToBytes, AnArrayWithoutElementsGivesNoBytes) {
  TestValue value = BytesValue({});
  ByteString bytes;
  ASSERT_TRUE(bytes.Allocate(4));
  EXPECT_EQ(SafeArrayToBytes(value->parray, &bytes), S_OK);
  EXPECT_FALSE(bytes.IsPresent());
}

TEST(SafeArrayToBytes, TakesOneByteForEachElementOfTheFirstDimension) {
  TestValue wide = ArrayValue(VT_UI4, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  ByteString bytes;
  EXPECT_EQ(SafeArrayToBytes(wide->parray, &bytes), S_OK);
  EXPECT_EQ(Content(bytes), (Bytes{1, 2, 3}));

  SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 0}};
  TestValue plane(VT_ARRAY | VT_UI1);
  plane->parray = SafeArrayCreate(VT_UI1, 2, bounds);
  ASSERT_NE(plane->parray, nullptr);
  void* data = nullptr;
  ASSERT_EQ(SafeArrayAccessData(plane->parray, &data), S_OK);
  std::memcpy(data, "abcdef", 6);
  ASSERT_EQ(SafeArrayUnaccessData(plane->parray), S_OK);
  EXPECT_EQ(SafeArrayToBytes(plane->parray, &bytes), S_OK);
  EXPECT_EQ(Content(bytes), BytesOf("ab"));
}

TEST(SafeArrayToBytes, AnEmptySecondDimensionLeavesNothingToRead) {
  SAFEARRAYBOUND bounds[] = {{5, 0}, {0, 0}};
  TestValue plane(VT_ARRAY | VT_UI1);
  plane->parray = SafeArrayCreate(VT_UI1, 2, bounds);
  ASSERT_NE(plane->parray, nullptr);
  ByteString bytes;
  EXPECT_EQ(SafeArrayToBytes(plane->parray, &bytes), S_OK);
  EXPECT_EQ(bytes.Count(), 0u);
}

TEST(SafeArrayToBytes, FailuresHaveTheirStatusAndLeaveNoBytes) {
  ByteString bytes;
  ASSERT_TRUE(bytes.Allocate(4));
  EXPECT_EQ(SafeArrayToBytes(nullptr, &bytes), E_POINTER);
  EXPECT_FALSE(bytes.IsPresent());
  TestValue value = BytesValue({1, 2, 3});
  EXPECT_EQ(SafeArrayToBytes(value->parray, nullptr), E_POINTER);

  SAFEARRAY none = {};
  LONG bound = 0;
  const HRESULT unreadable = SafeArrayGetLBound(&none, 1, &bound);
  ASSERT_TRUE(FAILED(unreadable));
  EXPECT_EQ(SafeArrayToBytes(&none, &bytes), unreadable);

  HRESULT status = S_OK;
  {
    FailAllocationsAfter fail(0);
    status = SafeArrayToBytes(value->parray, &bytes);
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_FALSE(bytes.IsPresent());
  EXPECT_EQ(value->parray->cLocks, 0u);

  // The lock count is at its maximum.
  const ULONG locks = value->parray->cLocks;
  value->parray->cLocks = 0xFFFFFFFFu;
  void* data = nullptr;
  const HRESULT refused = SafeArrayAccessData(value->parray, &data);
  if (FAILED(refused)) {
    EXPECT_EQ(SafeArrayToBytes(value->parray, &bytes), refused);
    EXPECT_FALSE(bytes.IsPresent());
  }
  value->parray->cLocks = locks;
}

TEST(ArrayByteCount, AnArrayWithoutDimensionsHasNoCount) {
  SAFEARRAY array = {};
  array.cbElements = 1;
  uint32_t count = 7;
  EXPECT_EQ(ArrayByteCount(&array, &count), DISP_E_BADINDEX);
  EXPECT_EQ(count, 0u);
}

TEST(ArrayByteCount, AnEmptyArrayNeedsNoData) {
  SAFEARRAY array = {};
  array.cDims = 1;
  array.cbElements = 1;
  uint32_t count = 7;
  EXPECT_EQ(ArrayByteCount(&array, &count), S_OK);
  EXPECT_EQ(count, 0u);
  array.rgsabound[0].cElements = 1;
  EXPECT_EQ(ArrayByteCount(&array, &count), E_INVALIDARG);
}

TEST(ArrayByteCount, NullArgumentsAreRefused) {
  uint32_t count = 7;
  EXPECT_EQ(ArrayByteCount(nullptr, &count), E_POINTER);
  EXPECT_EQ(count, 0u);
  TestValue value = BytesValue({1, 2, 3});
  EXPECT_EQ(ArrayByteCount(value->parray, nullptr), E_POINTER);
  EXPECT_EQ(ArrayByteCount(value->parray, &count), S_OK);
  EXPECT_EQ(count, 3u);
}

TEST(BytesToSafeArray, MakesAVectorFromZero) {
  const Bytes bytes = {9, 8, 7};
  SAFEARRAY* array = nullptr;
  ASSERT_EQ(BytesToSafeArray(bytes.data(), 3, &array), S_OK);
  TestValue owner(VT_ARRAY | VT_UI1);
  owner->parray = array;
  LONG lower = -1, upper = -1;
  VARTYPE type = VT_EMPTY;
  EXPECT_EQ(SafeArrayGetDim(array), 1u);
  EXPECT_EQ(SafeArrayGetLBound(array, 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
  EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
  EXPECT_EQ(lower, 0);
  EXPECT_EQ(upper, 2);
  EXPECT_EQ(type, VT_UI1);
  EXPECT_EQ(array->cLocks, 0u);
  EXPECT_EQ(BytesOfArray(owner), bytes);
}

TEST(BytesToSafeArray, NoBytesMakeAnEmptyArray) {
  const uint8_t byte = 1;
  for (const uint8_t* bytes : {static_cast<const uint8_t*>(nullptr), &byte}) {
    TestValue owner;
    ASSERT_EQ(BytesToVariant(bytes, 0, &owner), S_OK);
    EXPECT_EQ(V_VT(&owner), VT_ARRAY | VT_UI1);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(owner->parray, 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
  }
}

TEST(BytesToSafeArray, FailuresHaveTheirStatusAndLeaveNoArray) {
  const uint8_t byte = 1;
  SAFEARRAY* array = reinterpret_cast<SAFEARRAY*>(8);
  EXPECT_EQ(BytesToSafeArray(&byte, 1, nullptr), E_POINTER);
  EXPECT_EQ(BytesToSafeArray(nullptr, 1, &array), E_POINTER);
  EXPECT_EQ(array, nullptr);
  if (!kRuntimeFailsOnDemand) return;
  MiroltaFailAllocationAfter(0);
  array = reinterpret_cast<SAFEARRAY*>(8);
  const HRESULT status = BytesToSafeArray(&byte, 1, &array);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(array, nullptr);
}

TEST(BytesToVariant, FailuresLeaveItEmpty) {
  const uint8_t byte = 1;
  EXPECT_EQ(BytesToVariant(&byte, 1, nullptr), E_POINTER);
  VARIANT out;
  V_VT(&out) = VT_I4;
  EXPECT_EQ(BytesToVariant(nullptr, 1, &out), E_POINTER);
  EXPECT_EQ(V_VT(&out), VT_EMPTY);
  if (!kRuntimeFailsOnDemand) return;
  V_VT(&out) = VT_I4;
  MiroltaFailAllocationAfter(0);
  const HRESULT status = BytesToVariant(&byte, 1, &out);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(V_VT(&out), VT_EMPTY);
}

}  // namespace
}  // namespace mirolta::test
