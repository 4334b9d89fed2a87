// Aggregated objects: identity and reference counts of inner and outer object.
#include "bstr.h"
#include "loaded_module.h"
#include "outer_object.h"

namespace mirolta::test {
namespace {

class AggregationTest : public ModuleTest, public testing::WithParamInterface<ClassCase> {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    OwnedReference<IClassFactory> factory = module.Factory(*GetParam().both);
    ASSERT_EQ(
        factory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(outer.inner.Put())),
        S_OK);
    factory.Reset();
    EXPECT_EQ(outer.references, 1u);  // the inner object does not hold the outer one
    EXPECT_TRUE(outer.asked.empty());
    dual_iid = *GetParam().iid;
  }
  void TearDown() override {
    EXPECT_EQ(outer.references, 1u);
    EXPECT_EQ(module.can_unload_now(), outer.inner ? S_FALSE : S_OK);
    outer.inner.Reset();
    ModuleTest::TearDown();
  }

  OuterObject outer;
  IID dual_iid;
};

INSTANTIATE_TEST_SUITE_P(Classes, AggregationTest, testing::ValuesIn(kClassCases),
                         [](const testing::TestParamInfo<ClassCase>& of) { return of.param.name; });

TEST_P(AggregationTest, InnerInterfacesAreTheOuterObjects) {
  for (const IID& iid : {dual_iid, IID(IID_IDispatch), IID(IID_ISupportErrorInfo)}) {
    OwnedReference<IUnknown> face;
    ASSERT_EQ(face.Query(&outer, iid), S_OK);
    EXPECT_EQ(outer.references, 2u);
    EXPECT_EQ(face->AddRef(), 3u);
    EXPECT_EQ(face->Release(), 2u);
    OwnedReference<IUnknown> identity;
    EXPECT_EQ(identity.Query(face.Get(), IID_IUnknown), S_OK);
    EXPECT_EQ(identity.Get(), static_cast<IUnknown*>(&outer));
    OwnedReference<IUnknown> own;
    EXPECT_EQ(own.Query(face.Get(), OuterObject::kInterface), S_OK);
    EXPECT_EQ(own.Get(), static_cast<IUnknown*>(&outer));
    OwnedReference<IUnknown> again;
    EXPECT_EQ(again.Query(face.Get(), iid), S_OK);
    EXPECT_EQ(again.Get(), face.Get());
    void* none = this;
    EXPECT_EQ(face->QueryInterface(IID_IClassFactory, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
  }
  EXPECT_FALSE(outer.asked.empty());
}

TEST_P(AggregationTest, TheInnerUnknownIsItsOwn) {
  const size_t asked = outer.asked.size();
  OwnedReference<IUnknown> same;
  ASSERT_EQ(same.Query(outer.inner.Get(), IID_IUnknown), S_OK);
  EXPECT_EQ(same.Get(), outer.inner.Get());
  EXPECT_EQ(outer.inner->AddRef(), 3u);
  EXPECT_EQ(outer.inner->Release(), 2u);
  EXPECT_EQ(outer.references, 1u);
  void* none = this;
  EXPECT_EQ(outer.inner->QueryInterface(OuterObject::kInterface, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(outer.inner->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(outer.asked.size(), asked);
}

TEST_P(AggregationTest, AQueryOfTheInnerUnknownCountsAtTheOuterObject) {
  OwnedReference<IUnknown> face;
  ASSERT_EQ(face.Query(outer.inner.Get(), dual_iid), S_OK);
  EXPECT_EQ(outer.references, 2u);
  EXPECT_EQ(outer.inner->AddRef(), 2u);
  EXPECT_EQ(outer.inner->Release(), 1u);
}

TEST_P(AggregationTest, StreamsBelongToTheOuterObjectToo) {
  OwnedReference<IUnknown> stream;
  const HRESULT status = stream.Query(&outer, IID_IStream);
  EXPECT_EQ(status, GetParam().is_stream ? S_OK : E_NOINTERFACE);
  EXPECT_EQ(outer.references, GetParam().is_stream ? 2u : 1u);
}

TEST_P(AggregationTest, LateBoundCallsReachTheInnerObject) {
  OwnedReference<IDispatch> dispatch;
  ASSERT_EQ(dispatch.Query(&outer, IID_IDispatch), S_OK);
  OwnedReference<ITypeInfo> info;
  ASSERT_EQ(dispatch->GetTypeInfo(0, 0, info.Put()), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == dual_iid);
  info->ReleaseTypeAttr(attributes);
}

TEST_P(AggregationTest, TheInnerObjectEndsWithItsOwnUnknown) {
  outer.inner.Reset();
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST_F(ModuleTest, AnAggregatedObjectWorks) {
  OuterObject outer;
  OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObjectFree);
  ASSERT_EQ(
      factory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(outer.inner.Put())),
      S_OK);
  OwnedReference<IHashObject> hash;
  ASSERT_EQ(hash.Query(&outer, IID_IHashObject), S_OK);
  ASSERT_EQ(hash->InitHash(Bstr(OLESTR("MD5")).Get()), S_OK);
  ASSERT_EQ(hash->HashData(TextValue(OLESTR("abc")), -1), S_OK);
  OwnedBstr digest;
  ASSERT_EQ(hash->get_Value(digest.Put()), S_OK);
  EXPECT_EQ(Text(digest.Get()), OLESTR("900150983CD24FB0D6963F7D28E17F72"));
}

}  // namespace
}  // namespace mirolta::test
