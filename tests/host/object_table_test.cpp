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

// More slots than a table starts with, in use and free in turn.
TEST(ObjectTable, ManySlotsKeepTheirNumbersAndPlaces) {
  ObjectTable table;
  std::vector<SlotNumber> numbers;
  std::vector<ObjectSlot*> slots;
  for (int i = 0; i < 1000; ++i) {
    numbers.push_back(table.Add(SlotKind::kUnknown, Text(OLESTR("x"))));
    slots.push_back(table.Find(numbers.back()));
    ASSERT_NE(slots.back(), nullptr);
  }
  for (size_t i = 0; i < numbers.size(); i += 2) table.Remove(numbers[i]);
  EXPECT_EQ(table.Count(), 500u);
  const SlotNumber later = table.Add(SlotKind::kStream, VARIANT{});
  for (size_t i = 0; i < numbers.size(); ++i) {
    ASSERT_NE(numbers[i], later);
    ASSERT_EQ(table.Find(numbers[i]), i % 2 != 0 ? slots[i] : nullptr);
  }
  EXPECT_EQ(table.Find(kNoSlot), nullptr);
  EXPECT_EQ(table.Find(~SlotNumber{0}), nullptr);
}

// A value that counts its references, and with the last one takes a slot of the table.
class Counted final : public IUnknown {
 public:
  explicit Counted(ObjectTable* table = nullptr) : table_(table) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override {
    if (--references == 0 && table_ != nullptr) {
      table_->ReleaseDropped();
      EXPECT_NE(table_->Add(SlotKind::kUnknown, Text(OLESTR("x"))), kNoSlot);
    }
    return references;
  }
  VARIANT Value() {
    AddRef();
    VARIANT value = {};
    value.vt = VT_UNKNOWN;
    value.punkVal = this;
    return value;
  }
  ULONG references = 0;

 private:
  ObjectTable* table_;
};

TEST(ObjectTable, ADroppedSlotIsNotFoundAndItsValueIsReleasedLater) {
  ObjectTable table;
  Counted value;
  const SlotNumber number = table.Add(SlotKind::kUnknown, value.Value());
  int owner = 0, proxy = 0;
  table.SetOwner(number, &owner);
  table.Drop(number, &proxy);
  EXPECT_NE(table.Find(number), nullptr);
  table.Drop(number, &owner);
  table.Drop(number, &proxy);
  EXPECT_EQ(table.Find(number), nullptr);
  EXPECT_EQ(table.Count(), 0u);
  table.Remove(number);
  EXPECT_EQ(value.references, 1u);
  EXPECT_NE(table.Add(SlotKind::kUnknown, Text(OLESTR("y"))), number);
  table.ReleaseDropped();
  EXPECT_EQ(value.references, 0u);
  table.ReleaseDropped();
  EXPECT_EQ(table.Count(), 1u);
}

TEST(ObjectTable, ReleasesMayReenter) {
  ObjectTable table;
  Counted first(&table), second(&table), third(&table);
  const SlotNumber numbers[] = {table.Add(SlotKind::kUnknown, first.Value()),
                                table.Add(SlotKind::kUnknown, second.Value())};
  for (const SlotNumber number : numbers) table.Drop(number, nullptr);
  table.ReleaseDropped();
  EXPECT_EQ(first.references + second.references, 0u);
  EXPECT_EQ(table.Count(), 2u);
  table.Remove(table.Add(SlotKind::kUnknown, third.Value()));
  EXPECT_EQ(third.references, 0u);
  EXPECT_EQ(table.Count(), 3u);
}

TEST(ObjectTable, ASlotWhoseOwnerWasNotMadeIsDropped) {
  ObjectTable table;
  const int owner = 0;
  Counted kept, lost, next;
  const SlotNumber first = table.AddForOwner(SlotKind::kUnknown, kept.Value());
  table.SetOwner(first, &owner);
  const SlotNumber second = table.AddForOwner(SlotKind::kUnknown, lost.Value());
  EXPECT_NE(table.Find(second), nullptr);
  const SlotNumber third = table.AddForOwner(SlotKind::kUnknown, next.Value());
  EXPECT_EQ(lost.references, 0u);
  EXPECT_EQ(table.Find(second), nullptr);
  table.ReleaseDropped();
  EXPECT_EQ(next.references, 0u);
  EXPECT_EQ(table.Find(third), nullptr);
  EXPECT_NE(table.Find(first), nullptr);
  EXPECT_EQ(kept.references, 1u);
}

TEST(ObjectTable, ItsEndReleasesEveryValue) {
  Counted used, dropped, lost;
  {
    ObjectTable table;
    EXPECT_NE(table.Add(SlotKind::kUnknown, used.Value()), kNoSlot);
    table.Drop(table.Add(SlotKind::kUnknown, dropped.Value()), nullptr);
    EXPECT_NE(table.AddForOwner(SlotKind::kUnknown, lost.Value()), kNoSlot);
  }
  EXPECT_EQ(used.references + dropped.references + lost.references, 0u);
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

TEST_F(StaleHandle, ItsEndFreesNothing) {
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
  // The number in the header of a global variable's value.
  SlotNumber SlotOf(const char* name) {
    duk_get_global_string(Api(), name);
    SlotNumber number = kNoSlot;
    const bool is_handle = HandleAt(Api(), -1, &number);
    EXPECT_EQ(is_handle, number != kNoSlot);
    EXPECT_EQ(number, SlotOfBlock(duk_get_heapptr(Api(), -1)));
    duk_pop(Api());
    return number;
  }
};

TEST_F(Handles, OnlyTheObjectOfASlotIsAHandle) {
  Run("var s = WScript.MemoryStream(), other = WScript.MemoryStream(), heir = Object.create(s);"
      "var proxy = new Proxy(s, {}), text = 'text', bytes = new Uint8Array(3), nothing = null;");
  EXPECT_NE(SlotOf("s"), kNoSlot);
  EXPECT_NE(SlotOf("s"), SlotOf("other"));
  for (const char* name : {"heir", "proxy", "text", "bytes", "nothing", "isNaN"}) {
    EXPECT_EQ(SlotOf(name), kNoSlot) << name;
  }
}

// Blocks of many sizes, some of which the handles had.
TEST_F(Handles, ABlockThatAHandleHadIsNoneAnyMore) {
  Run("for (var i = 0; i < 100; i++) WScript.MemoryStream();");
  std::vector<void*> blocks;
  for (size_t size = 1; size < 500; ++size) {
    blocks.push_back(duk_alloc_raw(Api(), size));
    ASSERT_EQ(SlotOfBlock(blocks.back()), kNoSlot) << size;
  }
  for (void* block : blocks) duk_free_raw(Api(), block);
}

TEST_F(Handles, ABlockKeepsItsSlotWhenItMoves) {
  const SlotNumber number = engine_->Context().objects.Add(SlotKind::kUnknown, VARIANT{});
  void* block = duk_alloc_raw(Api(), 64);
  HeaderOf(block)->slot = number;
  block = duk_realloc_raw(Api(), block, size_t{1} << 20);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(SlotOfBlock(block), number);
  engine_->Context().objects.SetOwner(number, block);
  EXPECT_NE(engine_->Context().objects.Find(number), nullptr);
  duk_free_raw(Api(), block);
  EXPECT_EQ(engine_->Context().objects.Find(number), nullptr);
}

}  // namespace
}  // namespace mirolta::host
