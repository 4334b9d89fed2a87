#include <dlfcn.h>

#include <cstring>
#include <thread>

#include "all_at_once.h"
#include "portable/module_resources.h"
#include "portable/registry_mode.h"
#include "runtime_allocations.h"
#include "system_support.h"
#include "system_test_module.h"

namespace mirolta {
namespace {

constexpr char kModuleFile[] = SYSTEM_TEST_MODULE;

bool ModuleIsLoaded() {
  void* library = dlopen(kModuleFile, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

// --- modules by name, and their resources ---

class LoadedModule : public testing::Test {
 protected:
  LoadedModule() : module_(LoadLibraryW(Wide(kModuleFile).c_str())) {}
  ~LoadedModule() override {
    EXPECT_EQ(FreeLibrary(module_), TRUE);
    EXPECT_FALSE(ModuleIsLoaded());
  }
  const HMODULE module_;
};

TEST_F(LoadedModule, IsTheHandleThatItAttachedWith) {
  ASSERT_NE(module_, nullptr);
  using Handle = HINSTANCE (*)();
  const Handle handle = reinterpret_cast<Handle>(
      reinterpret_cast<void (*)()>(GetProcAddress(module_, "TestModuleHandle")));
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(handle(), module_);
  EXPECT_EQ(LoadLibraryW(Wide(kModuleFile).c_str()), module_);
  EXPECT_EQ(FreeLibrary(module_), TRUE);
  EXPECT_TRUE(ModuleIsLoaded());
  EXPECT_EQ(GetProcAddress(module_, "NoSuchEntry"), nullptr);
  EXPECT_EQ(GetProcAddress(module_, nullptr), nullptr);
  EXPECT_EQ(DisableThreadLibraryCalls(module_), TRUE);
  EXPECT_NE(MiroltaModuleResources(module_), nullptr);
}

TEST_F(LoadedModule, GivesItsStrings) {
  WCHAR text[16] = u"###";
  EXPECT_EQ(LoadStringW(module_, 100, text, 16), 11);
  EXPECT_EQ(std::u16string(text), u"Test module");
  EXPECT_EQ(LoadStringW(module_, 100, text, 5), 4);
  EXPECT_EQ(std::u16string(text), u"Test");
  EXPECT_EQ(LoadStringW(module_, 65535, text, 16), 4);
  EXPECT_EQ(LoadStringW(module_, 101, text, 16), 0);
  EXPECT_EQ(LoadStringW(module_, 102, text, 16), 0);
  EXPECT_EQ(LoadStringW(module_, 100, nullptr, 16), 0);
  EXPECT_EQ(LoadStringW(module_, 100, text, -1), 0);
  const WCHAR* resource = nullptr;
  EXPECT_EQ(LoadStringW(module_, 100, reinterpret_cast<LPWSTR>(&resource), 0), 11);
  EXPECT_EQ(std::u16string(resource), u"Test module");
}

TEST_F(LoadedModule, GivesItsData) {
  const HRSRC found = FindResourceW(module_, MAKEINTRESOURCEW(7), u"REGISTRY");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(SizeofResource(module_, found), 3u);
  const void* bytes = LockResource(LoadResource(module_, found));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(std::memcmp(bytes, "\1\2\3", 3), 0);
  EXPECT_EQ(FindResourceW(module_, u"#7", u"registry"), found);
  EXPECT_EQ(SizeofResource(module_, FindResourceW(module_, u"#7", u"other")), 2u);
  for (const LPCWSTR name : {u"#8", u"7", u"#", u"#7x", u"#1-", u"#65543"}) {
    EXPECT_EQ(FindResourceW(module_, name, u"REGISTRY"), nullptr);
  }
  EXPECT_EQ(FindResourceW(module_, u"#7", u"REGISTRYX"), nullptr);
  EXPECT_EQ(FindResourceW(module_, u"#7", MAKEINTRESOURCEW(10)), nullptr);
  EXPECT_EQ(LoadResource(module_, nullptr), nullptr);
  EXPECT_EQ(SizeofResource(module_, nullptr), 0u);
}

TEST_F(LoadedModule, KnowsItsFile) {
  WCHAR file[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(module_, file, MAX_PATH);
  EXPECT_EQ(Narrow(file), kModuleFile);
  EXPECT_EQ(length, std::strlen(kModuleFile));
  EXPECT_EQ(GetModuleFileNameW(module_, file, 5), 5u);  // cut short
  EXPECT_EQ(Narrow(file), std::string(kModuleFile, 4));
  EXPECT_EQ(GetModuleFileNameW(module_, file, 0), 0u);
}

TEST(Modules, TheProgramHasAFileToo) {
  WCHAR file[1024] = {};
  EXPECT_GT(GetModuleFileNameW(nullptr, file, 1024), 0u);
  EXPECT_EQ(Narrow(file), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST(Modules, AProgramMayAttachResources) {
  static constexpr StringResource kStrings[] = {{1, u"one"}};
  static constexpr ModuleResources kResources = {kStrings, 1, nullptr, 0, nullptr};
  const HINSTANCE module = MiroltaAttachModule(&kResources);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(MiroltaModuleResources(module), &kResources);
  WCHAR text[1024];
  EXPECT_EQ(LoadStringW(module, 1, text, 1024), 3);
  EXPECT_GT(GetModuleFileNameW(module, text, 1024), 0u);
  EXPECT_EQ(Narrow(text), std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_EQ(FreeLibrary(module), FALSE);  // was not loaded
  MiroltaDetachModule(module);
  EXPECT_EQ(MiroltaModuleResources(module), nullptr);
  EXPECT_EQ(LoadStringW(module, 1, text, 1024), 0);
  EXPECT_EQ(GetModuleFileNameW(module, text, 1024), 0u);
  EXPECT_EQ(MiroltaAttachModule(nullptr), nullptr);

  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(MiroltaAttachModule(&kResources), nullptr);
  MiroltaFailAllocationAfter(-1);
}

TEST(Modules, WrongHandlesAndFilesAreRefused) {
  const TemporaryFolder folder;
  WriteFile(folder.File("text.so"), "no module");
  EXPECT_EQ(LoadLibraryW(Wide(folder.File("text.so")).c_str()), nullptr);
  EXPECT_EQ(LoadLibraryW(Wide(folder.File("none.so")).c_str()), nullptr);
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
  WCHAR text[8];
  const HMODULE wrong = reinterpret_cast<HMODULE>(text);
  EXPECT_EQ(LoadStringW(wrong, 1, text, 8), 0);
  EXPECT_EQ(FindResourceW(wrong, u"#1", u"X"), nullptr);
  EXPECT_EQ(GetProcAddress(wrong, "x"), nullptr);
  EXPECT_EQ(FreeLibrary(wrong), FALSE);
  EXPECT_EQ(FreeLibrary(nullptr), FALSE);
  EXPECT_EQ(DisableThreadLibraryCalls(wrong), FALSE);
}

TEST(Modules, ThePlatformsOwnLibrariesAreThisRuntime) {
  for (const LPCWSTR name : {u"oleaut32.dll", u"OLE32.dll"}) {
    const HMODULE module = LoadLibraryW(name);
    ASSERT_NE(module, nullptr);
    const FARPROC entry = GetProcAddress(module, "UnRegisterTypeLib");
    EXPECT_EQ(reinterpret_cast<void (*)()>(entry),
              reinterpret_cast<void (*)()>(&UnRegisterTypeLib));
    Dl_info runtime = {};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(entry), &runtime), 0);
    WCHAR file[MAX_PATH + 1] = {};
    ASSERT_GT(GetModuleFileNameW(module, file, MAX_PATH + 1), 0u);
    EXPECT_EQ(std::u16string(file), Wide(runtime.dli_fname));
    EXPECT_EQ(FreeLibrary(module), TRUE);
  }
}

// --- class objects ---

class ClassObjects : public RegistryTest {
 protected:
  ClassObjects() { Register(kModuleFile); }
  ~ClassObjects() override { CoFreeUnusedLibrariesEx(0, 0); }

  static void SetDefault(const std::u16string& path, const std::string& text) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    const std::u16string wide = Wide(text);
    EXPECT_EQ(RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(wide.c_str()),
                             static_cast<DWORD>(wide.size() * 2 + 2)),
              ERROR_SUCCESS);
    RegCloseKey(key);
  }
  static std::u16string IdText() {
    WCHAR text[39];
    StringFromGUID2(kTestClass, text, 39);
    return text;
  }
  static void Register(const std::string& file) {
    SetDefault(u"CLSID\\" + IdText() + u"\\InprocServer32", file);
    SetDefault(u"CLSID\\" + IdText() + u"\\ProgID", "Test.Class.1");
    SetDefault(u"Test.Class\\CLSID", Narrow(IdText()));
  }
  static HRESULT Create(IUnknown** out, REFCLSID id = kTestClass) {
    void* object = nullptr;
    const HRESULT status =
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object);
    *out = static_cast<IUnknown*>(object);
    return status;
  }
};

TEST_F(ClassObjects, AreCreatedAndTheirModuleUnloads) {
  EXPECT_FALSE(ModuleIsLoaded());
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  EXPECT_TRUE(ModuleIsLoaded());
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_TRUE(ModuleIsLoaded());  // in use
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_TRUE(ModuleIsLoaded());
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(ModuleIsLoaded());
  ASSERT_EQ(Create(&object), S_OK);  // and loads again
  object->Release();
}

TEST_F(ClassObjects, FactoriesAndLocksKeepTheModule) {
  void* out = nullptr;
  ASSERT_EQ(CoGetClassObject(kTestClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, &out),
            S_OK);
  IClassFactory* factory = static_cast<IClassFactory*>(out);
  factory->LockServer(TRUE);
  IClassFactory* again = factory;
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_TRUE(ModuleIsLoaded());
  again->LockServer(FALSE);
  again->Release();
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(ModuleIsLoaded());
}

TEST_F(ClassObjects, FailuresHaveTheirOwnStatuses) {
  IUnknown* object = reinterpret_cast<IUnknown*>(0x10);
  EXPECT_EQ(Create(&object, IID_IDispatch), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(object, nullptr);
  void* out = nullptr;
  EXPECT_EQ(CoGetClassObject(kTestClass, 4, nullptr, IID_IUnknown, &out), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(CoGetClassObject(kTestClass, 1, nullptr, IID_IDispatch, &out), E_NOINTERFACE);
  EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, 1, IID_IDispatch, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, 1, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(CoGetClassObject(kTestClass, 1, nullptr, IID_IUnknown, nullptr), E_INVALIDARG);
  Register(folder_.File("none.so"));
  EXPECT_EQ(Create(&object), CO_E_DLLNOTFOUND);
  WriteFile(folder_.File("text.so"), "no module");
  Register(folder_.File("text.so"));
  EXPECT_EQ(Create(&object), CO_E_ERRORINDLL);
  Register("libm.so.6");  // a library, but no module
  EXPECT_EQ(Create(&object), CO_E_ERRORINDLL);
  Register("");
  EXPECT_TRUE(FAILED(Create(&object)));
  WriteFile(file_, "damaged");
  EXPECT_EQ(Create(&object), HRESULT_FROM_WIN32(ERROR_BADDB));
}

TEST_F(ClassObjects, AModuleThatGivesNoFactoryMakesNoObject) {
  WCHAR id[39];
  StringFromGUID2(kHollowClass, id, 39);
  SetDefault(std::u16string(u"CLSID\\") + id + u"\\InprocServer32", kModuleFile);
  IUnknown* object = reinterpret_cast<IUnknown*>(0x10);
  EXPECT_EQ(Create(&object, kHollowClass), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
}

TEST_F(ClassObjects, ProgIdsLeadToClasses) {
  CLSID id = {};
  EXPECT_EQ(CLSIDFromProgID(u"Test.Class", &id), S_OK);
  EXPECT_EQ(id, kTestClass);
  EXPECT_EQ(CLSIDFromProgID(u"test.CLASS", &id), S_OK);
  EXPECT_EQ(CLSIDFromProgID(IdText().c_str(), &id), S_OK);
  EXPECT_EQ(id, kTestClass);
  EXPECT_EQ(CLSIDFromProgID(u"Test.None", &id), CO_E_CLASSSTRING);
  EXPECT_EQ(id, CLSID_NULL);
  EXPECT_EQ(CLSIDFromProgID(u"", &id), CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromProgID(u"{damaged}", &id), CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromProgID(nullptr, &id), E_INVALIDARG);
  SetDefault(u"Test.Damaged\\CLSID", "damaged");
  EXPECT_EQ(CLSIDFromProgID(u"Test.Damaged", &id), CO_E_CLASSSTRING);

  LPOLESTR text = nullptr;
  ASSERT_EQ(ProgIDFromCLSID(kTestClass, &text), S_OK);
  EXPECT_EQ(Narrow(text), "Test.Class.1");
  CoTaskMemFree(text);
  EXPECT_EQ(ProgIDFromCLSID(IID_IDispatch, &text), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(text, nullptr);
}

TEST_F(ClassObjects, InitializationsAreCounted) {
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
  std::thread([] {
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    CoUninitialize();
  }).join();
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  object->Release();
  CoUninitialize();
  EXPECT_TRUE(ModuleIsLoaded());
  CoUninitialize();
  EXPECT_FALSE(ModuleIsLoaded());  // the last one unloads idle modules
  CoUninitialize();                // one too many does nothing
}

// A thread that never initialized may still be inside a module when the last one that did
// uninitializes.
TEST_F(ClassObjects, TheLastUninitializingKeepsWhatOtherThreadsUsed) {
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  std::thread([] {
    IUnknown* object = nullptr;
    ASSERT_EQ(Create(&object), S_OK);
    object->Release();
  }).join();
  CoUninitialize();
  EXPECT_TRUE(ModuleIsLoaded());
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(ModuleIsLoaded());
}

// Sets what the loaded module calls once at one of its hooks.
void SetHook(LPCSTR hook, void (*call)()) {
  const HMODULE module = LoadLibraryW(Wide(kModuleFile).c_str());
  using Setter = void (*)(void (*)());
  const Setter set =
      reinterpret_cast<Setter>(reinterpret_cast<void (*)()>(GetProcAddress(module, hook)));
  ASSERT_NE(set, nullptr);
  set(call);
  FreeLibrary(module);
}

// A module's DllCanUnloadNow may clean up itself.
TEST_F(ClassObjects, CleaningUpIsReentrant) {
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  SetHook("TestModuleOnCanUnload", [] { CoFreeUnusedLibrariesEx(0, 0); });
  object->Release();
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(ModuleIsLoaded());
}

// A module that is entered while it reports that it is idle stays loaded.
TEST_F(ClassObjects, AUseDuringTheQuestionKeepsTheModule) {
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  static IUnknown* entered = nullptr;
  SetHook("TestModuleOnCanUnload", [] { ASSERT_EQ(Create(&entered), S_OK); });
  object->Release();
  CoFreeUnusedLibrariesEx(0, 0);
  ASSERT_TRUE(ModuleIsLoaded());
  EXPECT_EQ(entered->Release(), 0u);
}

// Clean-up when the module's count is zero and a thread is still inside.
TEST_F(ClassObjects, AModuleStaysUntilTheLastReleaseIsDone) {
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  SetHook("TestModuleOnReleased", [] { CoFreeUnusedLibraries(); });
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_TRUE(ModuleIsLoaded());
}

// The runtime's own calls hold the module without any delay.
TEST_F(ClassObjects, AModuleStaysUntilItsFactoryIsReleased) {
  IUnknown* object = nullptr;
  ASSERT_EQ(Create(&object), S_OK);
  object->Release();
  // The object that does not have the interface goes first, then the factory.
  SetHook("TestModuleOnReleased",
          [] { SetHook("TestModuleOnReleased", [] { CoFreeUnusedLibrariesEx(0, 0); }); });
  void* none = nullptr;
  EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &none),
            E_NOINTERFACE);
  EXPECT_TRUE(ModuleIsLoaded());
}

TEST_F(ClassObjects, ManyThreadsCreateWhileModulesAreFreed) {
  test::AllAtOnce(8, [](unsigned) {
    // Each keeps one object: a module is unloaded only when no thread is inside it.
    IUnknown* kept = nullptr;
    ASSERT_EQ(Create(&kept), S_OK);
    for (int n = 0; n < 50; ++n) {
      IUnknown* object = nullptr;
      ASSERT_EQ(Create(&object), S_OK);
      CoFreeUnusedLibrariesEx(0, 0);
      EXPECT_EQ(object->Release(), 0u);
    }
    kept->Release();
  });
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_FALSE(ModuleIsLoaded());
}

TEST_F(ClassObjects, EveryShortAllocationIsReported) {
  IUnknown* object = nullptr;
  const LONG failures = test::FailEachAllocation(
      [&] {
        object = nullptr;
        return Create(&object);
      },
      [&](HRESULT status, bool failed) {
        if (object != nullptr) object->Release();
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_TRUE(status == S_OK || (failed && status == E_OUTOFMEMORY)) << status;
      });
  EXPECT_GT(failures, 3);
  EXPECT_FALSE(ModuleIsLoaded());
}

}  // namespace
}  // namespace mirolta
