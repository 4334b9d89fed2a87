// Many threads in the module's entry points at once; loading and unloading.
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <vector>

#include "all_at_once.h"
#include "bstr.h"
#include "creatable_classes.h"
#include "run_time.h"
#include "system_rules.h"

namespace mirolta::test {
namespace {

constexpr unsigned kThreads = 64;

// Asked without holding the module: not the portable runtime's loader, whose answer would hold it.
bool IsLoaded() {
#ifdef _WIN32
  return GetModuleHandleW(ModuleFile().c_str()) != nullptr;
#else
  std::ifstream maps("/proc/self/maps");
  const std::string all((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
  return all.find(MIROLTA_MODULE) != std::string::npos;
#endif
}

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
  ASSERT_EQ(hash->InitHash(Bstr(OLESTR("SHA256")).Get()), S_OK);
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
      if (raises && hash->Reset() != kNotInitialized) ++wrong;
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

// Each thread loads and unloads independently; a thread that has the module loaded can use all of
// it.
TEST(ModuleThreadsTest, ThreadsLoadAndUnloadItAsTheyLike) {
  std::atomic<int> wrong{0};
  AllAtOnce(8, [&](unsigned thread) {
    for (int round = 0; round < 40; ++round) {
      LoadedModule module;
      if (module.handle() == nullptr || module.get_class_object == nullptr) {
        ++wrong;
        continue;
      }
      // Only the entry points, a factory, an object, or everything that an object loads.
      const unsigned what = (thread + static_cast<unsigned>(round)) % 4;
      if (what == 0) continue;
      const OwnedReference<IClassFactory> factory = module.Factory(CLSID_HashObject);
      if (what == 1) continue;
      const OwnedReference<IHashObject> object = module.CreateHash();
      if (module.can_unload_now() != S_FALSE) ++wrong;
      if (what == 2) continue;
      OwnedReference<ITypeInfo> info;
      if (object->GetTypeInfo(0, 0, info.Put()) != S_OK) ++wrong;
      if (object->Reset() != kNotInitialized) ++wrong;
      SetErrorInfo(0, nullptr);
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_FALSE(IsLoaded());
}

// The same through the runtime's class objects, which load the module for whoever asks first and
// unload it on clean-up.
class ClassObjectThreadsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    ASSERT_NO_FATAL_FAILURE(MakeClassesCreatable());
  }
  void TearDown() override {
    CoFreeUnusedLibrariesEx(0, 0);
    CoUninitialize();
    EXPECT_FALSE(IsLoaded());
    EndCreatableClasses();
  }

  static OwnedReference<IHashObject> Create() {
    OwnedReference<IHashObject> object;
    EXPECT_EQ(CoCreateInstance(CLSID_HashObject, nullptr, CLSCTX_INPROC_SERVER, IID_IHashObject,
                               reinterpret_cast<void**>(object.Put())),
              S_OK);
    return object;
  }
};

TEST_F(ClassObjectThreadsTest, TheFirstCallsLoadItAndTheLastUnloadIt) {
  for (int round = 0; round < 20; ++round) {
    EXPECT_FALSE(IsLoaded());
    std::vector<OwnedReference<IHashObject>> objects(8);
    AllAtOnce(8, [&](unsigned i) {
      objects[i] = Create();
      LPOLESTR name = const_cast<LPOLESTR>(OLESTR("hashdata"));
      DISPID id = -1;
      EXPECT_EQ(objects[i]->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
      EXPECT_EQ(id, 4);
    });
    EXPECT_TRUE(IsLoaded());
    // All but one end; the module stays loaded for it.
    AllAtOnce(7, [&](unsigned i) { objects[i].Reset(); });
    AllAtOnce(8, [](unsigned) { CoFreeUnusedLibrariesEx(0, 0); });
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(objects[7]->Reset(), kNotInitialized);
    objects[7].Reset();
    AllAtOnce(8, [](unsigned) { CoFreeUnusedLibrariesEx(0, 0); });
    EXPECT_FALSE(IsLoaded());
  }
  SetErrorInfo(0, nullptr);
}

// Clean-up unloads no module that a thread is in or about to use: neither during a creation nor
// during the last release.
TEST_F(ClassObjectThreadsTest, CleaningUpDisturbsNoThreadThatCreatesAndReleases) {
  // Wine 8 crashes if clean-up runs while it creates the first object of a module that it has just loaded.
  if (!kPortableRuntime) Create();
  const RunTime time(1);
  // Few of them, so that the module is often idle.
  AllAtOnce(4, [&](unsigned i) {
    for (unsigned round = 0; !time.IsOver(); ++round) {
      if (i < 2) {
        OwnedReference<IHashObject> object = Create();
        ASSERT_TRUE(object);
        if (round % 8 == 0) {
          EXPECT_EQ(object->Reset(), kNotInitialized);
          SetErrorInfo(0, nullptr);
        }
        object.Reset();
      } else {
        CoFreeUnusedLibraries();
      }
    }
  });
}

// The tests of the delay are tests of the portable runtime. Wine 8 never unloads while clean-up runs
// continuously.
constexpr char kOwnDelay[] = "the system counts the delay in its own way";

// The module is unloaded when it was idle for the delay, and loaded again by the next use. Between
// the rounds no thread is inside; during them clean-up runs continuously.
TEST_F(ClassObjectThreadsTest, CleaningUpUnloadsAfterTheDelay) {
  if (!kPortableRuntime) GTEST_SKIP() << kOwnDelay;
  // More than any thread is kept waiting inside its last release.
  constexpr std::chrono::milliseconds kDelay(1500);
  std::atomic<bool> over{false};
  Thread cleaner([&] {
    while (!over) {
      CoFreeUnusedLibrariesEx(static_cast<DWORD>(kDelay.count()), 0);
      LetOthersRun();
    }
  });
  const RunTime time(2);
  for (int round = 0; round < 2 || !time.IsOver(); ++round) {
    const auto begin = std::chrono::steady_clock::now();
    AllAtOnce(4, [&](unsigned) {
      for (int i = 0; i < 200; ++i) EXPECT_TRUE(Create());
    });
    // On a busy machine this thread may look after the delay.
    EXPECT_TRUE(IsLoaded() || std::chrono::steady_clock::now() - begin >= kDelay);
    for (const RunTime limit(30); IsLoaded() && !limit.IsOver();) {
      Pause(std::chrono::milliseconds(10));
    }
    ASSERT_FALSE(IsLoaded());
  }
  over = true;
  cleaner.join();
}

// Uses the module twice, two thirds of the delay apart, and looks for the last time two thirds after
// that: too late after the first look, not after the second. Returns how long the module was idle then.
template <typename Use>
std::chrono::milliseconds IdleAtTheLastLook(std::chrono::milliseconds delay, const Use& use) {
  const auto look = [&] { CoFreeUnusedLibrariesEx(static_cast<DWORD>(delay.count()), 0); };
  use();
  look();
  Pause(delay * 2 / 3);
  const auto last_use = std::chrono::steady_clock::now();
  use();
  look();
  Pause(delay * 2 / 3);
  look();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               last_use);
}

TEST_F(ClassObjectThreadsTest, TheDelayBeginsAnewWithEveryUse) {
  if (!kPortableRuntime) GTEST_SKIP() << kOwnDelay;
  // On a busy machine a look may come too late to say anything: the next attempt has more time.
  std::chrono::milliseconds delay(1500);
  while (IdleAtTheLastLook(delay, [&] { Create(); }) >= delay) {
    delay *= 2;
    ASSERT_LT(delay, std::chrono::minutes(1));
  }
  EXPECT_TRUE(IsLoaded());
  // The default delay is minutes.
  Pause(std::chrono::milliseconds(1000));
  CoFreeUnusedLibraries();
  CoFreeUnusedLibrariesEx(INFINITE, 0);
  EXPECT_TRUE(IsLoaded());
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(IsLoaded());
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
  ASSERT_EQ(info->GetFuncDesc(kInheritedFunctions + 4, &function), S_OK);
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
