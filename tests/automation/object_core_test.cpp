// Lifetime of an automation object: construction, reference counting and destruction, alone or
// aggregated.
#include <functional>
#include <vector>

#include "dispatch_object.h"
#include "memory_watch.h"
#include "outer_object.h"
#include "test_module.h"

namespace mirolta::test {
namespace {

constexpr IID kProbeInterface = {0x0F0E0D0C, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
constexpr CLSID kProbeId = {0x0F0E0D0D, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
TypeInfoHolder probe_type_info(kProbeInterface);

}  // namespace

extern const ClassDescription kProbeClass;
const ClassDescription kProbeClass = {&kProbeId, &probe_type_info};

namespace {

// What the objects of the running test do and have done.
struct Record {
  std::function<HRESULT(IUnknown*)> construct;
  std::function<void(IUnknown*)> destroy;
  int constructed = 0;
  int destroyed = 0;
};
Record record;

class Probe final : public DispatchObject<kProbeClass, IDispatch> {
 public:
  explicit Probe(IUnknown* outer) : DispatchObject(outer) {}
  ~Probe() override {
    ++record.destroyed;
    if (record.destroy) record.destroy(static_cast<IDispatch*>(this));
  }
  HRESULT FinalConstruct() override {
    ++record.constructed;
    return record.construct ? record.construct(static_cast<IDispatch*>(this)) : S_OK;
  }
  static HRESULT RaiseMessage(UINT id) { return Raise(id); }
};

class ObjectCoreTest : public testing::Test {
 protected:
  ObjectCoreTest() { record = {}; }
  ~ObjectCoreTest() override { record = {}; }
  HRESULT Make(REFIID iid, IUnknown** out, IUnknown* outer = nullptr) {
    return CreateObject<Probe>(outer, iid, reinterpret_cast<void**>(out));
  }
  LONG Count() const { return CurrentModule()->lock_count; }

  TestModule module;
};

TEST_F(ObjectCoreTest, IsMadeWithOneReferenceAndCountedByTheModule) {
  OwnedReference<IUnknown> object;
  ASSERT_EQ(Make(IID_IUnknown, object.Put()), S_OK);
  EXPECT_EQ(record.constructed, 1);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(record.destroyed, 0);
  object.Reset();
  EXPECT_EQ(record.destroyed, 1);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, AnInterfaceItLacksLeavesNothing) {
  IUnknown* out = reinterpret_cast<IUnknown*>(this);
  EXPECT_EQ(Make(IID_IStream, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(record.constructed, 1);
  EXPECT_EQ(record.destroyed, 1);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, AFailedConstructionLeavesNothing) {
  record.construct = [](IUnknown*) { return E_UNEXPECTED; };
  IUnknown* out = nullptr;
  EXPECT_EQ(Make(IID_IUnknown, &out), E_UNEXPECTED);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(record.destroyed, 1);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, WithoutMemoryThereIsNoObject) {
  IUnknown* out = nullptr;
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter none(0);
    status = Make(IID_IUnknown, &out);
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(record.constructed, 0);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, ReferencesDuringConstructionDoNotEndIt) {
  record.construct = [](IUnknown* self) {
    EXPECT_EQ(self->AddRef(), 2u);
    EXPECT_EQ(self->Release(), 1u);
    return S_OK;
  };
  OwnedReference<IUnknown> object;
  ASSERT_EQ(Make(IID_IUnknown, object.Put()), S_OK);
  EXPECT_EQ(record.destroyed, 0);
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
}

TEST_F(ObjectCoreTest, ReferencesDuringDestructionDoNotEndItTwice) {
  record.destroy = [](IUnknown* self) {
    EXPECT_EQ(self->AddRef(), 2u);
    EXPECT_EQ(self->Release(), 1u);
  };
  OwnedReference<IUnknown> object;
  ASSERT_EQ(Make(IID_IUnknown, object.Put()), S_OK);
  object.Reset();
  EXPECT_EQ(record.destroyed, 1);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, ReleaseOfTheLastReferenceGivesZero) {
  IUnknown* object = nullptr;
  ASSERT_EQ(Make(IID_IUnknown, &object), S_OK);
  EXPECT_EQ(object->Release(), 0u);
}

TEST_F(ObjectCoreTest, EndsWithAllItsMemory) {
  const long before = LiveAllocations();
  OwnedReference<IUnknown> object;
  ASSERT_EQ(Make(IID_IUnknown, object.Put()), S_OK);
  EXPECT_EQ(LiveAllocations(), before + 1);
  object.Reset();
  EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(ObjectCoreTest, APartAnswersForItselfByItsOwnUnknownOnly) {
  OuterObject outer;
  OwnedReference<IUnknown> inner;
  ASSERT_EQ(Make(IID_IUnknown, inner.Put(), &outer), S_OK);
  EXPECT_EQ(outer.references, 1u);
  EXPECT_TRUE(outer.asked.empty());
  OwnedReference<IDispatch> dispatch;
  ASSERT_EQ(dispatch.Query(inner.Get(), IID_IDispatch), S_OK);
  EXPECT_EQ(outer.references, 2u);
  EXPECT_NE(static_cast<IUnknown*>(dispatch.Get()), inner.Get());

  void* out = nullptr;
  EXPECT_EQ(dispatch->QueryInterface(kProbeInterface, &out), E_NOINTERFACE);
  OwnedReference<IUnknown> identity;
  EXPECT_EQ(identity.Query(dispatch.Get(), IID_IUnknown), S_OK);
  EXPECT_EQ(identity.Get(), static_cast<IUnknown*>(&outer));
  identity.Reset();
  ASSERT_EQ(outer.asked.size(), 2u);
  EXPECT_TRUE(outer.asked[0] == kProbeInterface);
  EXPECT_TRUE(outer.asked[1] == IID_IUnknown);
  EXPECT_EQ(inner->AddRef(), 2u);
  EXPECT_EQ(inner->Release(), 1u);
  dispatch.Reset();
  EXPECT_EQ(outer.references, 1u);
  EXPECT_EQ(Count(), 1);
  inner.Reset();
  EXPECT_EQ(record.destroyed, 1);
  EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectCoreTest, ReferencesOfAPartDuringItsDestructionAreTheOuterObjects) {
  OuterObject outer;
  record.destroy = [&](IUnknown* self) {
    EXPECT_EQ(self->AddRef(), 2u);
    EXPECT_EQ(self->Release(), 1u);
  };
  OwnedReference<IUnknown> inner;
  ASSERT_EQ(Make(IID_IUnknown, inner.Put(), &outer), S_OK);
  inner.Reset();
  EXPECT_EQ(record.destroyed, 1);
}

TEST_F(ObjectCoreTest, AnErrorAfterTheModuleHasGoneHasNoText) {
  const HINSTANCE instance = CurrentModule()->instance;
  EXPECT_EQ(Probe::RaiseMessage(10104), kNotInitialized);
  EXPECT_EQ(TakeError().description, OLESTR("Not initialized."));
  TermModuleState();
  EXPECT_EQ(Probe::RaiseMessage(10104), kNotInitialized);
  EXPECT_EQ(TakeError().description, OLESTR("Unknown Error"));
  InitModuleState(instance, nullptr, LIBID_MIROLTALib);
}

TEST_F(ObjectCoreTest, SupportsErrorInfoForItsInterface) {
  OwnedReference<IUnknown> object;
  ASSERT_EQ(Make(kProbeInterface, object.Put()), S_OK);
  OwnedReference<ISupportErrorInfo> supports;
  ASSERT_EQ(supports.Query(object.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(supports->InterfaceSupportsErrorInfo(kProbeInterface), S_OK);
  EXPECT_EQ(supports->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
