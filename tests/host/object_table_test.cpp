#include "objects/object_table.h"

#include <gtest/gtest.h>
#include <stddef.h>

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

// More targets than the table of recent look-ups has rows, one of which several share.
TEST(ObjectTable, ATargetLeadsToTheLastSlotThatHasItAsLongAsThatIsThere) {
  ObjectTable table;
  const std::vector<max_align_t> targets(1000);
  std::vector<SlotNumber> numbers;
  for (const max_align_t& target : targets) {
    numbers.push_back(table.Add(SlotKind::kUnknown, Text(OLESTR("x"))));
    EXPECT_EQ(table.FindTarget(&target), nullptr);
    table.SetTarget(numbers.back(), &target);
  }
  for (size_t i = 0; i < targets.size(); ++i) {
    const SlotNumber number = numbers[i];
    for (int time = 0; time < 2; ++time) ASSERT_EQ(table.FindTarget(&targets[i])->number, number);
    const SlotNumber later = table.Add(SlotKind::kUnknown, Text(OLESTR("y")));
    if (i % 2 != 0) table.SetTarget(later, &targets[i]);
    table.Remove(number);
    ObjectSlot* const found = table.FindTarget(&targets[i]);
    ASSERT_EQ(found, i % 2 != 0 ? table.Find(later) : nullptr);
    table.Remove(later);
    ASSERT_EQ(table.FindTarget(&targets[i]), nullptr);
  }
  EXPECT_EQ(table.FindTarget(nullptr), nullptr);
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

class Handles : public EngineTest {
 protected:
  // A block of the engine's memory at the address of a handle that was looked up.
  void* NotedBlock() {
    void* block = duk_alloc_raw(Api(), 64);
    engine_->Context().handles.Note(block, 7);
    EXPECT_EQ(engine_->Context().handles.Find(block), SlotNumber{7});
    return block;
  }
  SlotNumber FindNoted(const void* block) { return engine_->Context().handles.Find(block); }
};

TEST_F(Handles, AFreedBlockIsNoHandle) {
  void* block = NotedBlock();
  duk_free_raw(Api(), block);
  EXPECT_EQ(FindNoted(block), kNoSlot);
}

TEST_F(Handles, ABlockThatMayHaveMovedIsNoHandle) {
  void* block = NotedBlock();
  void* resized = duk_realloc_raw(Api(), block, size_t{1} << 20);
  ASSERT_NE(resized, nullptr);
  EXPECT_EQ(FindNoted(block), kNoSlot);
  duk_free_raw(Api(), resized);
}

TEST_F(Handles, ALookedUpHandleIsFoundAgainAndOtherObjectsAreNone) {
  Run("var s = WScript.MemoryStream(), heir = Object.create(s);");
  SlotNumber first = kNoSlot, second = kNoSlot;
  duk_get_global_string(Api(), "s");
  EXPECT_TRUE(HandleAt(Api(), -1, &first));
  EXPECT_EQ(FindNoted(duk_get_heapptr(Api(), -1)), first);
  EXPECT_TRUE(HandleAt(Api(), -1, &second));
  EXPECT_EQ(first, second);
  EXPECT_NE(first, kNoSlot);
  duk_get_global_string(Api(), "heir");
  EXPECT_FALSE(HandleAt(Api(), -1, &second));
  EXPECT_EQ(FindNoted(duk_get_heapptr(Api(), -1)), kNoSlot);
  duk_pop_2(Api());
}

// Rows are shared by addresses that are far apart.
TEST(HandleCacheTest, OneRowKeepsTheLastHandleOnly) {
  HandleCache cache;
  alignas(16) static const char kPlaces[16 * 1024] = {};
  for (size_t i = 0; i < sizeof kPlaces; i += 16) cache.Note(kPlaces + i, i + 1);
  size_t found = 0;
  for (size_t i = 0; i < sizeof kPlaces; i += 16) {
    const SlotNumber number = cache.Find(kPlaces + i);
    if (number == kNoSlot) continue;
    EXPECT_EQ(number, i + 1);
    ++found;
  }
  EXPECT_GT(found, 0u);
  EXPECT_LT(found, sizeof kPlaces / 16);
  EXPECT_EQ(cache.Find(nullptr), kNoSlot);
}

}  // namespace
}  // namespace mirolta::host
