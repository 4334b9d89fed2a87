#include "objects/object_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "engine/host_errors.h"
#include "host_fixture.h"
#include "objects/object_handle.h"
#include "values/scoped_variant.h"

namespace mirolta::host {
namespace {

VARIANT Text(const OLECHAR* text) {
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(text);
  return value;
}

TEST(ObjectTable, NumbersAreNeverReused) {
  ObjectTable table;
  std::vector<SlotNumber> numbers;
  for (int i = 0; i < 100; ++i) {
    const SlotNumber number = table.Add(SlotKind::kUnknown, Text(OLESTR("x")));
    ASSERT_NE(number, kNoSlot);
    for (SlotNumber old : numbers) {
      ASSERT_NE(number, old);
      ASSERT_EQ(table.Find(old), nullptr);
      table.Remove(old);  // a second time: nothing
    }
    ASSERT_NE(table.Find(number, SlotKind::kUnknown), nullptr);
    ASSERT_EQ(table.Find(number, SlotKind::kStream), nullptr);
    table.Remove(number);
    numbers.push_back(number);
  }
}

TEST(ObjectTable, ClearedNumbersFindNothingAndAreNotReused) {
  ObjectTable table;
  const SlotNumber first = table.Add(SlotKind::kUnknown, Text(OLESTR("x")));
  table.Clear();
  EXPECT_EQ(table.Find(first), nullptr);
  EXPECT_NE(table.Add(SlotKind::kUnknown, Text(OLESTR("y"))), first);
  EXPECT_EQ(table.Find(first), nullptr);
}

// A script object whose slot was freed while the engine still holds the object.
class StaleHandle : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    Run("var s = WScript.MemoryStream(new Uint8Array(3)), read = s.Read, size = 0;");
    Forget("s");
    // Slots that a reused number would find.
    Run("var others = []; for (var i = 0; i < 10; i++) others.push(WScript.MemoryStream());");
  }

  void Forget(const char* name) {
    duk_get_global_string(Api(), name);
    SlotNumber number = kNoSlot;
    ASSERT_TRUE(HandleAt(Api(), -1, &number));
    engine_->Context().objects.Remove(number);
    duk_pop(Api());
  }
  const std::string error_ = Thrown(kDisconnected, "Object is not connected to server");
};

TEST_F(StaleHandle, EveryUseOfAStaleStreamIsAnErrorAndOtherStreamsAreUntouched) {
  for (int i = 0; i < 2; ++i) {
    for (const char* use :
         {"s.Read(1)", "s.Write(new Uint8Array(1))", "s.Seek(0)", "s.CopyTo(others[0])",
          "others[0].CopyTo(s)", "s.Commit()", "s.Close()", "s.Size", "s.Size = 1", "s.Position",
          "s.Position = 1", "WScript.StreamOf(s)", "new VBArray(s)", "'' + s", "WScript.Echo(s)",
          "WScript.MemoryStream(s)", "others[0].Write(s)", "read.call(s, 1)"}) {
      EXPECT_EQ(Run(use), error_) << use;
    }
  }
  EXPECT_EQ(Run("for (i = 0; i < 10; i++) size += others[i].Size; size"), "0");
}

TEST_F(StaleHandle, ItsFinalizerFreesNothing) {
  EXPECT_EQ(Run("others[0].Write(new Uint8Array(4)); s = null; others[0].Size"), "4");
}

TEST_F(StaleHandle, EveryUseOfAStaleArrayIsAnError) {
  ScopedVariant array;
  SAFEARRAYBOUND bound = {2, 0};
  array.vt = VT_ARRAY | VT_I4;
  array.parray = SafeArrayCreate(VT_I4, 1, &bound);
  PushSlotObject(Api(), SlotKind::kArray, VARIANT{array}, PushPlainObject);
  array.vt = VT_EMPTY;  // the table owns the array
  duk_put_global_string(Api(), "list");
  EXPECT_EQ(Run("var reader = new VBArray(list); reader.ubound()"), "1");
  Forget("list");
  EXPECT_EQ(Run("new VBArray(list)"), error_);
  EXPECT_EQ(Run("reader.ubound()"), error_);
  EXPECT_EQ(Run("WScript.StreamOf(list)"), error_);
}

}  // namespace
}  // namespace mirolta::host
