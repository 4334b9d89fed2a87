#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

#include "fake_object.h"
#include "portable/test_hooks.h"
#include "text.h"

namespace mirolta::test {
namespace {

TEST(SafeArray, VectorHasItsTypeAndBounds) {
  struct Row {
    VARTYPE type;
    UINT size;
    USHORT features;
  };
  const USHORT vector = FADF_CREATEVECTOR;
  const Row rows[] = {
      {VT_I1, 1, FADF_HAVEVARTYPE},
      {VT_UI1, 1, FADF_HAVEVARTYPE},
      {VT_I2, 2, FADF_HAVEVARTYPE},
      {VT_BOOL, 2, FADF_HAVEVARTYPE},
      {VT_I4, 4, FADF_HAVEVARTYPE},
      {VT_ERROR, 4, FADF_HAVEVARTYPE},
      {VT_R4, 4, FADF_HAVEVARTYPE},
      {VT_R8, 8, FADF_HAVEVARTYPE},
      {VT_CY, 8, FADF_HAVEVARTYPE},
      {VT_DATE, 8, FADF_HAVEVARTYPE},
      {VT_I8, 8, FADF_HAVEVARTYPE},
      {VT_DECIMAL, 16, FADF_HAVEVARTYPE},
      {VT_BSTR, sizeof(BSTR), FADF_BSTR | FADF_HAVEVARTYPE},
      {VT_VARIANT, sizeof(VARIANT), FADF_VARIANT | FADF_HAVEVARTYPE},
      {VT_UNKNOWN, sizeof(void*), FADF_UNKNOWN | FADF_HAVEIID},
      {VT_DISPATCH, sizeof(void*), FADF_DISPATCH | FADF_HAVEIID},
  };
  for (const Row& row : rows) {
    SAFEARRAY* array = SafeArrayCreateVector(row.type, -3, 4);
    ASSERT_NE(array, nullptr) << row.type;
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(SafeArrayGetElemsize(array), row.size);
    EXPECT_EQ(array->fFeatures, row.features | vector) << row.type;
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 1, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
    EXPECT_EQ(lower, -3);
    EXPECT_EQ(upper, 0);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  }
}

TEST(SafeArray, RefusesTypesThatAreNoElements) {
  for (VARTYPE type : {VT_EMPTY, VT_NULL, VT_VOID, VT_PTR, VT_ARRAY, VT_BYREF}) {
    EXPECT_EQ(SafeArrayCreateVector(type, 0, 1), nullptr) << type;
  }
  EXPECT_EQ(SafeArrayCreateVector(15, 0, 1), nullptr);
}

TEST(SafeArray, RefusesImpossibleSizes) {
  SAFEARRAYBOUND bounds[2] = {{0x10000, 0}, {0x10000, 0}};
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, bounds), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 0, bounds), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 0x10000, bounds), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 1, nullptr), nullptr);
}

class ThreeDimensions : public testing::Test {
 protected:
  ThreeDimensions() {
    SAFEARRAYBOUND bounds[3] = {{2, 10}, {3, -1}, {4, 0}};
    array_ = SafeArrayCreate(VT_I4, 3, bounds);
  }
  ~ThreeDimensions() override { EXPECT_EQ(SafeArrayDestroy(array_), S_OK); }
  SAFEARRAY* array_;
};

TEST_F(ThreeDimensions, StoresBoundsRightmostFirst) {
  EXPECT_EQ(SafeArrayGetDim(array_), 3u);
  EXPECT_EQ(array_->rgsabound[0].cElements, 4u);
  const LONG lower[] = {10, -1, 0};
  const LONG upper[] = {11, 1, 3};
  for (UINT i = 0; i < 3; ++i) {
    LONG bound = 99;
    EXPECT_EQ(SafeArrayGetLBound(array_, i + 1, &bound), S_OK);
    EXPECT_EQ(bound, lower[i]);
    EXPECT_EQ(SafeArrayGetUBound(array_, i + 1, &bound), S_OK);
    EXPECT_EQ(bound, upper[i]);
  }
  LONG bound = 99;
  EXPECT_EQ(SafeArrayGetLBound(array_, 0, &bound), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetUBound(array_, 4, &bound), DISP_E_BADINDEX);
  EXPECT_EQ(bound, 99);
}

TEST_F(ThreeDimensions, LeftmostIndexMovesFastest) {
  struct Row {
    LONG indices[3];
    ptrdiff_t offset;  // in elements; -1 if outside
  };
  Row rows[] = {{{10, -1, 0}, 0},      {{11, -1, 0}, 1},  {{10, 0, 0}, 2},
                {{10, -1, 1}, 6},      {{11, 1, 3}, 23},  {{9, -1, 0}, -1},
                {{12, -1, 0}, -1},     {{10, -2, 0}, -1}, {{10, 2, 0}, -1},
                {{10, -1, -1}, -1},    {{10, -1, 4}, -1}, {{INT_MAX, -1, 0}, -1},
                {{INT_MIN, -1, 0}, -1}};
  for (Row& row : rows) {
    void* element = nullptr;
    const HRESULT status = SafeArrayPtrOfIndex(array_, row.indices, &element);
    if (row.offset < 0) {
      EXPECT_EQ(status, DISP_E_BADINDEX);
      continue;
    }
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(static_cast<LONG*>(element) - static_cast<LONG*>(array_->pvData), row.offset);
  }
}

TEST_F(ThreeDimensions, PutAndGetGoToTheElementOnly) {
  LONG place[] = {11, 1, 3};
  LONG number = 1234567;
  EXPECT_EQ(SafeArrayPutElement(array_, place, &number), S_OK);
  EXPECT_EQ(static_cast<LONG*>(array_->pvData)[23], 1234567);
  for (int i = 0; i < 23; ++i) EXPECT_EQ(static_cast<LONG*>(array_->pvData)[i], 0);
  number = 0;
  EXPECT_EQ(SafeArrayGetElement(array_, place, &number), S_OK);
  EXPECT_EQ(number, 1234567);
  place[0] = 12;
  EXPECT_EQ(SafeArrayPutElement(array_, place, &number), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetElement(array_, place, &number), DISP_E_BADINDEX);
  EXPECT_EQ(array_->cLocks, 0u);
}

TEST_F(ThreeDimensions, LockedArrayIsNotDestroyed) {
  void* data = nullptr;
  EXPECT_EQ(SafeArrayLock(array_), S_OK);
  EXPECT_EQ(SafeArrayAccessData(array_, &data), S_OK);
  EXPECT_EQ(data, array_->pvData);
  EXPECT_EQ(array_->cLocks, 2u);
  EXPECT_EQ(SafeArrayDestroy(array_), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnaccessData(array_), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array_), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnlock(array_), S_OK);
  EXPECT_EQ(SafeArrayUnlock(array_), E_UNEXPECTED);
  EXPECT_EQ(array_->cLocks, 0u);
}

TEST(SafeArray, EmptyVectorHasNoElements) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 0);
  ASSERT_NE(array, nullptr);
  LONG upper = 9;
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
  EXPECT_EQ(upper, -1);
  LONG index = 0;
  void* element = nullptr;
  EXPECT_EQ(SafeArrayPtrOfIndex(array, &index, &element), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, TextsAreOwned) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 3);
  const OLECHAR source[] = {'x', 0, 'y'};
  BSTR text = SysAllocStringLen(source, 3);
  LONG index = 1;
  EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
  EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
  SysFreeString(text);
  SAFEARRAY* copy = nullptr;
  EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(SafeArrayGetElement(copy, &index, &text), S_OK);
  EXPECT_EQ(Text(text, SysStringLen(text)), Text(source, 3));
  SysFreeString(text);
  index = 2;
  EXPECT_EQ(SafeArrayGetElement(copy, &index, &text), S_OK);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, ValuesAreOwned) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
  TestValue value = TextValue(OLESTR("element"));
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
  VariantClear(&value);
  EXPECT_EQ(SafeArrayGetElement(array, &index, &value), S_OK);
  EXPECT_EQ(TextOf(value), OLESTR("element"));
  VARIANT invalid;
  VariantInit(&invalid);
  invalid.vt = 15;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &invalid), DISP_E_BADVARTYPE);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, ObjectsAreCounted) {
  FakeObject object;
  for (VARTYPE type : {VT_UNKNOWN, VT_DISPATCH}) {
    SAFEARRAY* array = SafeArrayCreateVector(type, 0, 2);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object)), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object)), S_OK);
    EXPECT_EQ(object.references, 2u);
    IUnknown* found = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &found), S_OK);
    EXPECT_EQ(found, &object);
    EXPECT_EQ(object.references, 3u);
    found->Release();
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(object.references, 2u);
    SafeArrayDestroy(array);
    SafeArrayDestroy(copy);
    EXPECT_EQ(object.references, 1u);
  }
}

TEST(SafeArray, FailedCopyGivesBackWhatItMade) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 3);
  BSTR text = SysAllocString(OLESTR("text"));
  for (LONG index = 0; index < 3; ++index) SafeArrayPutElement(array, &index, text);
  SysFreeString(text);
  // Descriptor, elements and three texts: each one fails in turn.
  for (LONG count = 0; count < 5; ++count) {
    SAFEARRAY* copy = array;
    MiroltaFailAllocationAfter(count);
    EXPECT_EQ(SafeArrayCopy(array, &copy), E_OUTOFMEMORY) << count;
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    EXPECT_EQ(copy, nullptr);
  }
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(SafeArrayCreateVector(VT_I4, 0, 1), nullptr);
  MiroltaFailAllocationAfter(1);
  EXPECT_EQ(SafeArrayCreateVector(VT_I4, 0, 1), nullptr);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, NewElementsAreZeroWhateverTheirMemoryHeld) {
  constexpr size_t kBytes = 3000;
  // The allocator reuses freed blocks of that size.
  void* filled[4];
  for (void*& block : filled) {
    block = CoTaskMemAlloc(kBytes);
    ASSERT_NE(block, nullptr);
    memset(block, 0xA5, kBytes);
  }
  for (void* const block : filled) CoTaskMemFree(block);
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, kBytes);
  ASSERT_NE(array, nullptr);
  const auto* const bytes = static_cast<const BYTE*>(array->pvData);
  EXPECT_EQ(std::vector<BYTE>(bytes, bytes + kBytes), std::vector<BYTE>(kBytes));
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, NullArrayIsRefusedButDestroyedAndCopied) {
  void* data = nullptr;
  LONG index = 0;
  VARTYPE type = 0;
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
  SAFEARRAY* copy = nullptr;
  EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
  EXPECT_EQ(copy, nullptr);
  EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &index), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPtrOfIndex(nullptr, &index, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
  EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
}

}  // namespace
}  // namespace mirolta::test
