#include "byte_view.h"

#include <gtest/gtest.h>

#include "key_conversion.h"
#include "memory_watch.h"
#include "owned_value.h"
#include "runtime_allocations.h"
#include "used_memory.h"
#include "value_cases.h"
#include "value_conversion.h"

namespace mirolta::test {
namespace {

Bytes Content(const ByteView& view) {
  return Bytes(view.Data(), view.Data() + view.Count());
}

Bytes Content(const ByteString& bytes) {
  return Bytes(bytes.Data(), bytes.Data() + bytes.Count());
}

TEST(ByteView, HasNoBytesBeforeItIsOpen) {
  const ByteView view;
  EXPECT_EQ(view.Data(), nullptr);
  EXPECT_EQ(view.Count(), 0u);
  EXPECT_FALSE(view.IsFromArray());
}

TEST(ByteView, GivesWhatTheCopyingConversionsGive) {
  ValueCases values;
  ByteView view;  // one for all: opening closes
  for (const auto& row : values.All()) {
    for (const LONG code_page : {-2, -1, 0, 1252, 4711}) {
      ByteString copy;
      const HRESULT expected = VariantToBytes(row.value, code_page, &copy);
      EXPECT_EQ(view.Open(row.value, code_page), expected) << row.name;
      EXPECT_EQ(Content(view), Content(copy)) << row.name;
    }
    ByteString copy;
    const HRESULT expected = VariantToByteArrayBytes(row.value, &copy);
    EXPECT_EQ(view.OpenByteArray(row.value), expected) << row.name;
    EXPECT_EQ(Content(view), Content(copy)) << row.name;
  }
  view.Close();
  EXPECT_EQ(values.array_->parray->cLocks, 0u);
  EXPECT_EQ(values.words_->parray->cLocks, 0u);
}

TEST(ByteView, ArraysWithoutDataAreRefusedEverywhere) {
  ValueCases values;
  int hollow = 0;
  for (const auto& row : values.All()) {
    if (row.name.find("without data") == row.name.npos) continue;
    const bool words = row.name.find("words") != row.name.npos;
    const bool behind_object = row.name.find("object") != row.name.npos;
    ++hollow;
    ByteView view;
    const HRESULT refused = E_INVALIDARG;
    EXPECT_EQ(view.Open(row.value, 0), refused) << row.name;
    EXPECT_EQ(view.Data(), nullptr);
    EXPECT_EQ(view.OpenUnresolved(row.value, 0), refused) << row.name;
    EXPECT_EQ(view.OpenByteArray(row.value), behind_object ? DISP_E_TYPEMISMATCH : refused);
    ByteString bytes;
    EXPECT_EQ(VariantToBytes(row.value, 0, &bytes), refused) << row.name;
    EXPECT_EQ(VariantToByteArrayBytes(row.value, &bytes),
              behind_object ? DISP_E_TYPEMISMATCH : refused);
    if (words || behind_object) continue;
    EXPECT_EQ(KeyFromVariant(row.value, 0, &bytes), refused) << row.name;
    EXPECT_FALSE(bytes.IsPresent());
    EXPECT_EQ(SafeArrayToBytes(values.hollow_->parray, &bytes), refused);
  }
  EXPECT_EQ(hollow, 5);
  EXPECT_EQ(values.hollow_->parray->cLocks, 0u);
}

TEST(ByteView, UnresolvedTakesByteArraysFromTheValueAsGiven) {
  ValueCases values;
  ByteView view;
  int arrays_behind_objects = 0;
  for (const auto& row : values.All()) {
    OwnedVariant resolved;
    ByteString copy;
    HRESULT expected = ResolveValue(&row.value, resolved.Put());
    if (SUCCEEDED(expected) && resolved.Type() == (VT_ARRAY | VT_UI1)) {
      expected = VariantToByteArrayBytes(row.value, &copy);
      arrays_behind_objects += V_VT(&row.value) == VT_DISPATCH;
    } else {
      expected = VariantToBytes(row.value, 1252, &copy);
    }
    EXPECT_EQ(view.OpenUnresolved(row.value, 1252), expected) << row.name;
    EXPECT_EQ(Content(view), Content(copy)) << row.name;
  }
  EXPECT_EQ(arrays_behind_objects, 1);
  EXPECT_EQ(view.OpenUnresolved(ObjectValue(&values.array_object_), 0), DISP_E_TYPEMISMATCH);
}

TEST(ByteView, ByteArraysAreReadWithoutCopying) {
  TestValue array = BytesValue({1, 2, 3});
  VARIANT by_reference = ReferenceTo(VT_ARRAY | VT_UI1, &array->parray);
  VARIANT to_value = ReferenceTo(VT_VARIANT, &array);
  const long live = LiveAllocations();
  for (const VARIANT& value : {static_cast<const VARIANT&>(array), by_reference, to_value}) {
    for (int way = 0; way < 3; ++way) {
      // A copy would fail.
      MiroltaFailAllocationAfter(0);
      ByteView view;
      const HRESULT status = way == 0   ? view.Open(value, 0)
                             : way == 1 ? view.OpenUnresolved(value, 0)
                                        : view.OpenByteArray(value);
      const bool failed = MiroltaAllocationHasFailed();
      MiroltaFailAllocationAfter(-1);
      EXPECT_EQ(status, S_OK);
      EXPECT_FALSE(failed);
      EXPECT_EQ(view.Data(), array->parray->pvData);
      EXPECT_EQ(view.Count(), 3u);
      EXPECT_TRUE(view.IsFromArray());
      EXPECT_EQ(array->parray->cLocks, 1u);
      view.Close();
      EXPECT_EQ(array->parray->cLocks, 0u);
      EXPECT_EQ(view.Data(), nullptr);
      EXPECT_FALSE(view.IsFromArray());
    }
    EXPECT_EQ(array->parray->cLocks, 0u);
  }
  EXPECT_EQ(LiveAllocations(), live);
}

TEST(ByteView, TellsAnEmptyArrayFromAnEmptyText) {
  FakeObject object(BytesValue({}));
  ByteView view;
  EXPECT_EQ(view.Open(BytesValue({}), 0), S_OK);
  EXPECT_TRUE(view.IsFromArray());
  EXPECT_EQ(view.Count(), 0u);
  EXPECT_EQ(view.Open(TextValue(OLESTR("")), 0), S_OK);
  EXPECT_FALSE(view.IsFromArray());
  EXPECT_EQ(view.Open(ObjectValue(&object), 0), S_OK);
  EXPECT_TRUE(view.IsFromArray());
  EXPECT_EQ(view.Open(TestValue(), 0), S_OK);
  EXPECT_FALSE(view.IsFromArray());
}

TEST(ByteView, ConvertedBytesAreWiped) {
  const Bytes secret = BytesOf("the secret of this test");
  const TestValue text = TextValue(OLESTR("the secret of this test"));
  WatchFreedMemory watch(secret.data(), secret.size());
  {
    ByteView view;
    ASSERT_EQ(view.Open(text, 0), S_OK);
    const Bytes copy = secret;
    Used(copy.data());
    EXPECT_EQ(copy.size(), view.Count());
  }
  EXPECT_GE(watch.Freed(), 2);
  EXPECT_EQ(watch.FreedWithSecret(), 1);  // the copy made in this test
}

}  // namespace
}  // namespace mirolta::test
