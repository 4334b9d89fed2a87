// The entry points, class factories, and the count that keeps the module loaded.
#include <algorithm>
#include <vector>

#include "loaded_module.h"

namespace mirolta::test {
namespace {

constexpr GUID kNoClass = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

class ClassObjectsTest : public ModuleTest {
 protected:
  HRESULT Get(REFCLSID id, REFIID iid, void** out) { return module.get_class_object(id, iid, out); }
};

TEST_F(ClassObjectsTest, IdentifiersAreAllDistinct) {
  std::vector<GUID> ids;
  for (const ClassCase& row : kClassCases) {
    ids.insert(ids.end(), {*row.both, *row.free, *row.iid});
  }
  ids.insert(ids.end(), {LIBID_MIROLTALib, IID_IToviStreamSource});
  for (size_t i = 0; i < ids.size(); ++i) {
    for (size_t k = 0; k < i; ++k) EXPECT_FALSE(ids[i] == ids[k]) << i << " and " << k;
  }
}

TEST_F(ClassObjectsTest, NeedsAPlaceForTheFactory) {
  EXPECT_EQ(Get(CLSID_HashObject, IID_IClassFactory, nullptr), E_POINTER);
  EXPECT_EQ(Get(kNoClass, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(ClassObjectsTest, AnUnknownClassIsNotAvailable) {
  void* out = this;
  EXPECT_EQ(Get(kNoClass, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(out, nullptr);
  // One bit of each word of an identifier.
  for (int word = 0; word < 4; ++word) {
    CLSID id = CLSID_HashObject;
    BYTE* bytes = reinterpret_cast<BYTE*>(&id);
    bytes[word * 4 + 3] ^= 0x10;
    out = this;
    EXPECT_EQ(Get(id, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
  }
}

TEST_F(ClassObjectsTest, AFactoryAnswersForItsInterfacesOnly) {
  void* out = this;
  EXPECT_EQ(Get(CLSID_HashObject, IID_IDispatch, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  const OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  out = this;
  EXPECT_EQ(factory->QueryInterface(IID_IHashObject, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  OwnedReference<IUnknown> unknown;
  EXPECT_EQ(unknown.Query(factory.Get(), IID_IUnknown), S_OK);
  EXPECT_EQ(unknown.Get(), static_cast<IUnknown*>(factory.Get()));
  OwnedReference<IClassFactory> again;
  EXPECT_EQ(again.Query(unknown.Get(), IID_IClassFactory), S_OK);
  EXPECT_EQ(again.Get(), factory.Get());
}

TEST_F(ClassObjectsTest, EveryClassHasOneFactoryOfItsOwn) {
  std::vector<IClassFactory*> factories;
  for (const ClassCase& row : kClassCases) {
    for (const CLSID* id : {row.both, row.free}) {
      const OwnedReference<IClassFactory> first = module.Factory(*id);
      const OwnedReference<IClassFactory> second = module.Factory(*id);
      EXPECT_EQ(first.Get(), second.Get()) << row.name;
      EXPECT_EQ(std::count(factories.begin(), factories.end(), first.Get()), 0) << row.name;
      factories.push_back(first.Get());
    }
  }
}

TEST_F(ClassObjectsTest, AClientsReferenceToAFactoryHoldsTheModule) {
  // The class table's own reference does not hold it; the second one does, further ones add
  // nothing.
  OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  EXPECT_EQ(factory->AddRef(), 3u);
  EXPECT_EQ(factory->Release(), 2u);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  EXPECT_EQ(factory.Get()->Release(), 1u);
  EXPECT_EQ(module.can_unload_now(), S_OK);
  EXPECT_EQ(factory->AddRef(), 2u);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
}

TEST_F(ClassObjectsTest, AFailedRequestHoldsNothing) {
  void* out = nullptr;
  EXPECT_EQ(Get(CLSID_HashObject, IID_IHashObject, &out), E_NOINTERFACE);
  EXPECT_EQ(module.can_unload_now(), S_OK);
  EXPECT_EQ(Get(kNoClass, IID_IUnknown, &out), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST_F(ClassObjectsTest, AnObjectHoldsTheModule) {
  OwnedReference<IHashObject> object = module.CreateHash();
  ASSERT_TRUE(object);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  object.Reset();
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST_F(ClassObjectsTest, AServerLockHoldsTheModule) {
  OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  EXPECT_EQ(factory->LockServer(7), S_OK);
  factory.Reset();
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  factory = module.Factory(CLSID_PexBigNumber);  // the count is the module's, not the factory's
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
  factory.Reset();
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  factory = module.Factory(CLSID_HashObject);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

TEST_F(ClassObjectsTest, CountsAddUpAndComeBack) {
  OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  factory->LockServer(TRUE);
  OwnedReference<IHashObject> first = module.CreateHash();
  OwnedReference<IHashObject> second = module.CreateHash(CLSID_HashObjectFree);
  first.Reset();
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  factory->LockServer(FALSE);
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  factory.Reset();
  EXPECT_EQ(module.can_unload_now(), S_FALSE);
  second.Reset();
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST_F(ClassObjectsTest, CreateInstanceNeedsAPlaceForTheObject) {
  const OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IHashObject, nullptr), E_POINTER);
}

TEST_F(ClassObjectsTest, AnObjectWithoutTheInterfaceIsDestroyed) {
  for (const ClassCase& row : kClassCases) {
    OwnedReference<IClassFactory> factory = module.Factory(*row.both);
    void* out = this;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &out), E_NOINTERFACE) << row.name;
    EXPECT_EQ(out, nullptr) << row.name;
    factory.Reset();
    EXPECT_EQ(module.can_unload_now(), S_OK) << row.name;
  }
}

TEST_F(ClassObjectsTest, WithoutAnObjectNothingIsDescribed) {
  const OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
  void* out = nullptr;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &out), E_NOINTERFACE);
  IErrorInfo* info = nullptr;
  EXPECT_EQ(GetErrorInfo(0, &info), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
