// Conversions when an operation of the platform fails. This program replaces those operations: they
// call the runtime's until a test makes one fail.
#include <gtest/gtest.h>

#include "byte_view.h"
#include "key_conversion.h"
#include "owned_value.h"
#include "platform_fault.h"
#include "test_values.h"
#include "value_conversion.h"

namespace mirolta {
namespace {

test::PlatformFault lower_bound, upper_bound, access, release, to_bytes, to_wide;

constexpr HRESULT kStruck = STG_E_ACCESSDENIED;

// Conversions of character sets, and those of them with flags or a default character.
int conversions = 0, special_conversions = 0;
void NoteCall(bool is_plain) {
  ++conversions;
  special_conversions += !is_plain;
}

}  // namespace
}  // namespace mirolta

using namespace mirolta;

extern "C" {

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  static auto* const runtime = test::RuntimeOperation(&SafeArrayGetLBound, "SafeArrayGetLBound");
  return lower_bound.Strikes() ? kStruck : runtime(array, dimension, bound);
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  static auto* const runtime = test::RuntimeOperation(&SafeArrayGetUBound, "SafeArrayGetUBound");
  return upper_bound.Strikes() ? kStruck : runtime(array, dimension, bound);
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  static auto* const runtime = test::RuntimeOperation(&SafeArrayAccessData, "SafeArrayAccessData");
  return mirolta::access.Strikes() ? kStruck : runtime(array, data);
}

// The array is unlocked nevertheless, so that it can be freed.
HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
  static auto* const runtime =
      test::RuntimeOperation(&SafeArrayUnaccessData, "SafeArrayUnaccessData");
  const HRESULT status = runtime(array);
  return release.Strikes() ? kStruck : status;
}

INT WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR text, INT length, LPSTR bytes,
                        INT capacity, LPCSTR default_character, BOOL* used_default) {
  static auto* const runtime = test::RuntimeOperation(&WideCharToMultiByte, "WideCharToMultiByte");
  NoteCall(flags == 0 && default_character == nullptr && used_default == nullptr);
  if (to_bytes.Strikes()) return 0;
  return runtime(code_page, flags, text, length, bytes, capacity, default_character, used_default);
}

INT MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR bytes, INT length, LPWSTR text,
                        INT capacity) {
  static auto* const runtime = test::RuntimeOperation(&MultiByteToWideChar, "MultiByteToWideChar");
  NoteCall(flags == 0);
  if (to_wide.Strikes()) return 0;
  return runtime(code_page, flags, bytes, length, text, capacity);
}

}  // extern "C"

namespace mirolta {

namespace test {
namespace {

class PlatformFailuresTest : public testing::Test {
 protected:
  void TearDown() override {
    for (PlatformFault* fault :
         {&lower_bound, &upper_bound, &access, &release, &to_bytes, &to_wide}) {
      fault->Disarm();
    }
  }
};

TEST_F(PlatformFailuresTest, AnArrayWithoutBoundsHasNoCount) {
  TestValue array = BytesValue({1, 2, 3});
  for (PlatformFault* fault : {&lower_bound, &upper_bound}) {
    fault->Arm();
    uint32_t count = 99;
    EXPECT_EQ(ArrayByteCount(array->parray, &count), kStruck);
    EXPECT_TRUE(fault->HasStruck());
    EXPECT_EQ(count, 0u);
  }
}

TEST_F(PlatformFailuresTest, NoBytesComeOfAnArrayThatCannotBeRead) {
  TestValue array = BytesValue({1, 2, 3});
  for (PlatformFault* fault : {&lower_bound, &upper_bound, &access}) {
    ByteString bytes;
    ASSERT_TRUE(bytes.Allocate(2));
    fault->Arm();
    EXPECT_EQ(SafeArrayToBytes(array->parray, &bytes), kStruck);
    EXPECT_TRUE(fault->HasStruck());
    EXPECT_FALSE(bytes.IsPresent());
    EXPECT_EQ(array->parray->cLocks, 0u);
  }
}

TEST_F(PlatformFailuresTest, NoArrayComesOfBytesThatCannotBeWritten) {
  const uint8_t bytes[] = {1, 2, 3};
  for (PlatformFault* fault : {&access, &release}) {
    fault->Arm();
    SAFEARRAY* array = reinterpret_cast<SAFEARRAY*>(1);
    EXPECT_EQ(BytesToSafeArray(bytes, 3, &array), kStruck);
    EXPECT_TRUE(fault->HasStruck());
    EXPECT_EQ(array, nullptr);

    fault->Arm();
    TestValue value;
    EXPECT_EQ(BytesToVariant(bytes, 3, &value), kStruck);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
}

TEST_F(PlatformFailuresTest, AViewOfAnArrayThatCannotBeReadIsClosed) {
  TestValue array = BytesValue({1, 2, 3});
  for (PlatformFault* fault : {&lower_bound, &upper_bound, &access}) {
    ByteView view;
    fault->Arm();
    EXPECT_EQ(view.Open(array, 0), kStruck);
    EXPECT_TRUE(fault->HasStruck());
    EXPECT_EQ(view.Count(), 0u);
    EXPECT_EQ(array->parray->cLocks, 0u);
    EXPECT_EQ(view.Open(array, 0), S_OK);
    EXPECT_EQ(Bytes(view.Data(), view.Data() + view.Count()), (Bytes{1, 2, 3}));
    EXPECT_EQ(array->parray->cLocks, 1u);
  }
  EXPECT_EQ(array->parray->cLocks, 0u);
}

// The length is asked first, then the bytes.
TEST_F(PlatformFailuresTest, ATextThatIsNotConvertedGivesNoBytesOrAMismatchedKey) {
  for (const int calls_before : {0, 1}) {
    ByteString bytes;
    ASSERT_TRUE(bytes.Allocate(2));
    to_bytes.Arm(calls_before);
    EXPECT_EQ(WideToBytes(OLESTR("abc"), 0, &bytes), S_OK);
    EXPECT_TRUE(to_bytes.HasStruck());
    EXPECT_EQ(bytes.Count(), 0u);

    ASSERT_TRUE(bytes.Allocate(2));
    to_bytes.Arm(calls_before);
    EXPECT_EQ(KeyFromVariant(TextValue(OLESTR("abc")), 0, &bytes), DISP_E_TYPEMISMATCH);
    EXPECT_TRUE(to_bytes.HasStruck());
    EXPECT_FALSE(bytes.IsPresent());
  }
}

TEST_F(PlatformFailuresTest, BytesThatAreNotConvertedGiveAnEmptyText) {
  const uint8_t bytes[] = {'a', 'b', 'c'};
  for (const int calls_before : {0, 1}) {
    to_wide.Arm(calls_before);
    OwnedBstr text;
    EXPECT_EQ(BytesToWide(bytes, 3, 0, text.Put()), S_OK);
    EXPECT_TRUE(to_wide.HasStruck());
    EXPECT_NE(text.Get(), nullptr);
    EXPECT_EQ(SysStringLen(text.Get()), 0u);
  }
}

TEST_F(PlatformFailuresTest, ConversionsHaveNoFlagsAndNoDefaultCharacter) {
  conversions = special_conversions = 0;
  ByteString bytes;
  EXPECT_EQ(WideToBytes(OLESTR("abc"), 1252, &bytes), S_OK);
  EXPECT_EQ(KeyFromVariant(TextValue(OLESTR("abc")), 1252, &bytes), S_OK);
  OwnedBstr text;
  EXPECT_EQ(BytesToWide(bytes.Data(), bytes.Count(), 1252, text.Put()), S_OK);
  EXPECT_EQ(conversions, 6);
  EXPECT_EQ(special_conversions, 0);
}

// What cannot be wiped is freed nevertheless; the sanitizers report a leak.
TEST_F(PlatformFailuresTest, AnArrayThatCannotBeWipedIsFreed) {
  for (PlatformFault* fault : {&lower_bound, &upper_bound, &access}) {
    VARIANT value;
    VariantInit(&value);
    {
      TestValue array = BytesValue({1, 2, 3});
      std::swap(value, *array.operator->());
    }
    fault->Arm();
    WipeAndClear(&value);
    EXPECT_TRUE(fault->HasStruck());
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
}

// A descriptor may be without data, and the platform does not free an array that is locked.
TEST_F(PlatformFailuresTest, LockedArraysAndThoseWithoutDataAreReleased) {
  for (const bool has_data : {true, false}) {
    TestValue owner = BytesValue({1, 2, 3});
    SAFEARRAY* const array = owner->parray;
    ASSERT_EQ(SafeArrayLock(array), S_OK);
    void* const data = array->pvData;
    if (!has_data) array->pvData = nullptr;
    VARIANT value;
    V_VT(&value) = VT_ARRAY | VT_UI1;
    V_ARRAY(&value) = array;
    WipeAndClear(&value);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
    EXPECT_EQ(array->cLocks, 1u);
    array->pvData = data;
    EXPECT_EQ(BytesOfArray(owner), has_data ? (Bytes{0, 0, 0}) : (Bytes{1, 2, 3}));
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
  }
}

}  // namespace
}  // namespace test
}  // namespace mirolta
