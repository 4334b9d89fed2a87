// Many threads at the module's doors at once, and loading and unloading it.
#include <atomic>
#include <thread>
#include <vector>

#include "loaded_module.h"

namespace mirolta::test {
namespace {

// Runs work(i) on `count` threads, all let go at the same moment.
template <typename Work>
void AllAtOnce(unsigned count, Work work) {
  std::atomic<unsigned> waiting{0};
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      ++waiting;
      while (!go) std::this_thread::yield();
      work(i);
    });
  }
  while (waiting != count) std::this_thread::yield();
  go = true;
  for (std::thread& thread : threads) thread.join();
}

constexpr unsigned kThreads = 64;

TEST(ModuleThreadsTest, TheFirstCallsMakeOneFactory) {
  for (int round = 0; round < 5; ++round) {
    LoadedModule module;
    ASSERT_NE(module.handle(), nullptr);
    std::vector<IClassFactory*> found(kThreads, nullptr);
    AllAtOnce(kThreads, [&](unsigned i) {
      void* out = nullptr;
      if (module.get_class_object(CLSID_HashObject, IID_IClassFactory, &out) == S_OK) {
        found[i] = static_cast<IClassFactory*>(out);
      }
    });
    for (IClassFactory* factory : found) {
      ASSERT_NE(factory, nullptr);
      EXPECT_EQ(factory, found[0]);
    }
    EXPECT_EQ(module.can_unload_now(), S_FALSE);
    for (IClassFactory* factory : found) factory->Release();
    EXPECT_EQ(module.can_unload_now(), S_OK);
  }
}

TEST(ModuleThreadsTest, TheFirstCallsLoadOneTypeInformation) {
  for (int round = 0; round < 5; ++round) {
    LoadedModule module;
    ASSERT_NE(module.handle(), nullptr);
    std::vector<ITypeInfo*> found(kThreads, nullptr);
    std::vector<DISPID> ids(kThreads, -1);
    AllAtOnce(kThreads, [&](unsigned i) {
      const OwnedReference<IHashObject> object = module.CreateHash();
      LPOLESTR name = const_cast<LPOLESTR>(i % 2 == 0 ? OLESTR("HashData") : OLESTR("hashdata"));
      if (i % 3 == 0) object->GetTypeInfo(0, 0, &found[i]);
      object->GetIDsOfNames(IID_NULL, &name, 1, 0, &ids[i]);
      if (found[i] == nullptr) object->GetTypeInfo(0, 0, &found[i]);
    });
    for (unsigned i = 0; i < kThreads; ++i) {
      ASSERT_NE(found[i], nullptr);
      EXPECT_EQ(found[i], found[0]);
      EXPECT_EQ(ids[i], 4);
    }
    for (ITypeInfo* info : found) info->Release();
    EXPECT_EQ(module.can_unload_now(), S_OK);
  }
}

TEST(ModuleThreadsTest, CountsStandAfterAnyOrderOfCalls) {
  LoadedModule module;
  ASSERT_NE(module.handle(), nullptr);
  std::atomic<int> wrong{0};
  AllAtOnce(16, [&](unsigned) {
    for (int i = 0; i < 50; ++i) {
      const OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
      factory->LockServer(TRUE);
      const OwnedReference<IHashObject> object = module.CreateHash(CLSID_HashObjectFree);
      void* none = nullptr;
      if (factory->CreateInstance(nullptr, IID_IStream, &none) != E_NOINTERFACE) ++wrong;
      if (module.can_unload_now() != S_FALSE) ++wrong;
      factory->LockServer(FALSE);
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST(ModuleThreadsTest, OneObjectDoesOneCallAtATime) {
  LoadedModule module;
  ASSERT_NE(module.handle(), nullptr);
  OwnedReference<IHashObject> hash = module.CreateHash();
  ASSERT_TRUE(hash);
  const TestValue name = TextValue(OLESTR("SHA256"));
  ASSERT_EQ(hash->InitHash(VARIANT(name).bstrVal), S_OK);
  // Whole digests of equal data: whatever the order of the calls, every reading finds that digest.
  const TestValue data = BytesValue(Bytes(1000, 0x61));
  std::atomic<int> wrong{0};
  AllAtOnce(8, [&](unsigned) {
    for (int i = 0; i < 100; ++i) {
      if (hash->HashData(data, -1) != S_OK) ++wrong;
      OwnedBstr digest;
      if (hash->get_Value(digest.Put()) != S_OK ||
          Text(digest.Get()) !=
              OLESTR("41EDECE42D63E8D9BF515A9BA6932E1C20CBC9F5A5D134645ADB5DB1B9737EA3")) {
        ++wrong;
      }
    }
  });
  EXPECT_EQ(wrong, 0);
  hash.Reset();
  EXPECT_EQ(module.can_unload_now(), S_OK);
}

TEST(ModuleThreadsTest, EveryThreadHasItsOwnErrorDescription) {
  LoadedModule module;
  ASSERT_NE(module.handle(), nullptr);
  OwnedReference<IHashObject> hash = module.CreateHash();
  ASSERT_TRUE(hash);
  std::atomic<int> wrong{0};
  AllAtOnce(8, [&](unsigned i) {
    const bool raises = i % 2 == 0;
    for (int n = 0; n < 20; ++n) {
      if (raises && hash->Reset() != static_cast<HRESULT>(0x80042778)) ++wrong;
      IErrorInfo* info = nullptr;
      if (GetErrorInfo(0, &info) != (raises ? S_OK : S_FALSE)) ++wrong;
      if (info != nullptr) info->Release();
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(ModuleThreadsTest, LoadsAndUnloadsAgainAndAgain) {
  for (int round = 0; round < 50; ++round) {
    LoadedModule module;
    ASSERT_NE(module.handle(), nullptr);
    ASSERT_EQ(module.can_unload_now(), S_OK);
    const OwnedReference<IHashObject> object = module.CreateHash();
    ASSERT_TRUE(object);
    OwnedReference<ITypeInfo> info;
    ASSERT_EQ(object->GetTypeInfo(0, 0, info.Put()), S_OK);
  }
}

TEST(ModuleThreadsTest, TypeInformationOutlivesTheModule) {
  OwnedReference<ITypeInfo> info;
  {
    LoadedModule module;
    ASSERT_NE(module.handle(), nullptr);
    const OwnedReference<IHashObject> object = module.CreateHash();
    ASSERT_TRUE(object);
    ASSERT_EQ(object->GetTypeInfo(0, 0, info.Put()), S_OK);
  }
  OwnedBstr name;
  OwnedBstr help;
  ASSERT_EQ(info->GetDocumentation(4, name.Put(), help.Put(), nullptr, nullptr), S_OK);
  EXPECT_EQ(Text(name.Get()), OLESTR("HashData"));
  EXPECT_NE(SysStringLen(help.Get()), 0u);
  FUNCDESC* function = nullptr;
  ASSERT_EQ(info->GetFuncDesc(4, &function), S_OK);
  EXPECT_EQ(function->memid, 4);
  info->ReleaseFuncDesc(function);
  LPOLESTR wanted = const_cast<LPOLESTR>(OLESTR("resetkey"));
  MEMBERID id = 0;
  EXPECT_EQ(info->GetIDsOfNames(&wanted, 1, &id), S_OK);
  EXPECT_EQ(id, 11);
  OwnedReference<ITypeLib> library;
  ASSERT_EQ(info->GetContainingTypeLib(library.Put(), nullptr), S_OK);
  EXPECT_GT(library->GetTypeInfoCount(), 0u);
}

}  // namespace
}  // namespace mirolta::test
