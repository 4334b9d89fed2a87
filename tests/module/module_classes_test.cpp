// The twelve rows: each creates a working object, both rows of a class one of the same class.
#include <vector>

#include "class_description.h"
#include "late_bound.h"
#include "loaded_module.h"

namespace mirolta::test {
namespace {

struct Row {
  const ClassCase* of;
  const CLSID* id;
  bool is_free;
};

class ModuleClassesTest : public ModuleTest, public testing::WithParamInterface<Row> {
 protected:
  const ClassCase& Class() const { return *GetParam().of; }
  template <typename Interface = IDispatch>
  OwnedReference<Interface> Make(REFIID iid = IID_IDispatch) {
    return module.Create<Interface>(*GetParam().id, iid);
  }
};

std::vector<Row> AllRows() {
  std::vector<Row> rows;
  for (const ClassCase& of : kClassCases) {
    rows.push_back({&of, of.both, false});
    rows.push_back({&of, of.free, true});
  }
  return rows;
}

INSTANTIATE_TEST_SUITE_P(AllRows, ModuleClassesTest, testing::ValuesIn(AllRows()),
                         [](const testing::TestParamInfo<Row>& row) {
                           return std::string(row.param.of->name) +
                                  (row.param.is_free ? "Free" : "Both");
                         });

TEST_P(ModuleClassesTest, AnswersForItsInterfaces) {
  OwnedReference<IDispatch> object = Make();
  ASSERT_TRUE(object);
  IUnknown* const identity = IdentityOf(object.Get());

  std::vector<IID> answered = {*Class().iid, IID_IDispatch, IID_ISupportErrorInfo, IID_IUnknown};
  if (Class().is_stream) answered.insert(answered.end(), {IID_IStream, IID_ISequentialStream});
  for (const IID& from : answered) {
    OwnedReference<IUnknown> face;
    ASSERT_EQ(face.Query(object.Get(), from), S_OK);
    EXPECT_EQ(IdentityOf(face.Get()), identity);
    for (const IID& to : answered) {
      OwnedReference<IUnknown> other;
      OwnedReference<IUnknown> again;
      EXPECT_EQ(other.Query(face.Get(), to), S_OK);
      EXPECT_EQ(again.Query(object.Get(), to), S_OK);
      EXPECT_EQ(other.Get(), again.Get());
    }
  }
  OwnedReference<IUnknown> dual;
  OwnedReference<IUnknown> dispatch;
  EXPECT_EQ(dual.Query(object.Get(), *Class().iid), S_OK);
  EXPECT_EQ(dispatch.Query(object.Get(), IID_IDispatch), S_OK);
  EXPECT_EQ(dual.Get(), dispatch.Get());
  // IUnknown is the first interface.
  OwnedReference<IUnknown> first;
  EXPECT_EQ(first.Query(object.Get(), Class().is_stream ? IID_IStream : *Class().iid), S_OK);
  EXPECT_EQ(first.Get(), identity);
}

TEST_P(ModuleClassesTest, RefusesOtherInterfaces) {
  OwnedReference<IDispatch> object = Make();
  ASSERT_TRUE(object);
  constexpr IID kProvideClassInfo = {
      0xB196B283, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
  constexpr IID kConnectionPoints = {
      0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
  std::vector<IID> refused = {IID_IClassFactory, IID_ITypeInfo,     IID_IErrorInfo, GUID_NULL,
                              kProvideClassInfo, kConnectionPoints, *GetParam().id};
  for (const ClassCase& other : kClassCases) {
    if (&other != &Class()) refused.push_back(*other.iid);
  }
  if (!Class().is_stream) refused.insert(refused.end(), {IID_IStream, IID_ISequentialStream});
  for (const IID& iid : refused) {
    void* out = this;
    EXPECT_EQ(object->QueryInterface(iid, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
  }
  EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_P(ModuleClassesTest, CountsItsReferences) {
  OwnedReference<IDispatch> object = Make();
  ASSERT_TRUE(object);
  EXPECT_EQ(object->AddRef(), 2u);
  OwnedReference<ISupportErrorInfo> other;
  ASSERT_EQ(other.Query(object.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(other->AddRef(), 4u);
  EXPECT_EQ(other->Release(), 3u);
  EXPECT_EQ(object->Release(), 2u);
  other.Reset();
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
}

TEST_P(ModuleClassesTest, SupportsErrorInfoForItsDualInterfaceOnly) {
  OwnedReference<ISupportErrorInfo> object = Make<ISupportErrorInfo>(IID_ISupportErrorInfo);
  ASSERT_TRUE(object);
  EXPECT_EQ(object->InterfaceSupportsErrorInfo(*Class().iid), S_OK);
  for (const IID& iid : {IID_IStream, IID_ISequentialStream, IID_IDispatch, IID_IUnknown,
                         IID_ISupportErrorInfo, GUID_NULL}) {
    EXPECT_EQ(object->InterfaceSupportsErrorInfo(iid), S_FALSE);
  }
}

TEST_P(ModuleClassesTest, ServesItsOwnTypeInformation) {
  OwnedReference<IDispatch> object = Make();
  ASSERT_TRUE(object);
  UINT count = 99;
  EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_POINTER);
  EXPECT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr), E_POINTER);
  OwnedReference<ITypeInfo> info;
  ASSERT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), S_OK);
  OwnedReference<ITypeInfo> same;  // the index is not examined
  ASSERT_EQ(object->GetTypeInfo(5, 0, same.Put()), S_OK);
  EXPECT_EQ(same.Get(), info.Get());
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == *Class().iid);
  info->ReleaseTypeAttr(attributes);

  // Objects of both rows share it.
  OwnedReference<IDispatch> other =
      module.Create<IDispatch>(GetParam().is_free ? *Class().both : *Class().free, IID_IDispatch);
  ASSERT_TRUE(other);
  ASSERT_EQ(other->GetTypeInfo(0, 0, same.Put()), S_OK);
  EXPECT_EQ(same.Get(), info.Get());
}

TEST_P(ModuleClassesTest, IsMadeAsAPartOfAnotherObject) {
  const OwnedReference<IClassFactory> factory = module.Factory(*GetParam().id);
  // Any object will do as the outer one: the inner object's own IUnknown does not lead to it.
  const OwnedReference<IHashObject> outer = module.CreateHash();
  ASSERT_TRUE(outer);
  for (const IID& iid : {*Class().iid, IID_IDispatch, IID_ISupportErrorInfo}) {
    void* out = this;
    EXPECT_EQ(factory->CreateInstance(outer.Get(), iid, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
  }
  OwnedReference<IUnknown> inner;
  ASSERT_EQ(
      factory->CreateInstance(outer.Get(), IID_IUnknown, reinterpret_cast<void**>(inner.Put())),
      S_OK);
  EXPECT_NE(inner.Get(), IdentityOf(outer.Get()));
  EXPECT_EQ(inner->AddRef(), 2u);
  EXPECT_EQ(inner->Release(), 1u);
}

// A member that a new object refuses, by class; numbers refuse nothing in words.
struct Refusal {
  const IID* iid;
  const OLECHAR* name;
  WORD flags;
  bool has_argument;
  HRESULT status;
  const OLECHAR* text;
};
constexpr Refusal kRefusals[] = {
    {&IID_IToviStreamDigest, OLESTR("ReadKey"), DISPATCH_PROPERTYGET, false, kNotInitialized,
     OLESTR("Not initialized.")},
    {&IID_IHashObject, OLESTR("Reset"), DISPATCH_METHOD, false, kNotInitialized,
     OLESTR("Not initialized.")},
    {&IID_ISymmetricCryptObject, OLESTR("ResetKey"), DISPATCH_METHOD, false, kNotInitialized,
     OLESTR("Not initialized.")},
    {&IID_IRSACrypt, OLESTR("Encrypt"), DISPATCH_METHOD, true, kKeyNotSet, OLESTR("Key not set.")},
    {&IID_IToviStreamCrypt, OLESTR("ReadKey"), DISPATCH_PROPERTYGET, false, kNotInitialized,
     OLESTR("Not initialized.")},
};

TEST_P(ModuleClassesTest, RaisesInTheNameOfTheBothRow) {
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  SetClassDescription(*Class().both, OLESTR("the class"));
  SetClassDescription(*Class().free, OLESTR("the free row"));
  OwnedReference<IDispatch> object = Make();
  ASSERT_TRUE(object);
  LateBound late(object.Get());
  for (const Refusal& refusal : kRefusals) {
    if (*refusal.iid != *Class().iid) continue;
    const DISPID id = late.IdOf(refusal.name);
    EXPECT_EQ(refusal.has_argument ? late.Call(id, refusal.flags, {NumberValue(1)})
                                   : late.Call(id, refusal.flags),
              refusal.status);
    EXPECT_TRUE(late.raised);
    EXPECT_EQ(late.description, refusal.text);
    EXPECT_EQ(late.source, OLESTR("the class"));
  }
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
}

}  // namespace
}  // namespace mirolta::test
