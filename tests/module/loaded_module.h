// The module as a host sees it: loaded by its file name, entered through its entry points.
#pragma once

#include <gtest/gtest.h>

#include "mirolta.h"
#include "module_statuses.h"
#include "owned_value.h"
#include "platform.h"
#include "test_values.h"
#include "text.h"

namespace mirolta::test {

// The module's file name (UTF-8 in MIROLTA_MODULE) as the runtime takes it.
inline Text ModuleFile() {
  OLECHAR file[1024] = {};
  MultiByteToWideChar(CP_UTF8, 0, MIROLTA_MODULE, -1, file, 1024);
  return file;
}

// LoadedModule holds the module loaded; an empty one did not load.
class LoadedModule {
 public:
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, LPVOID*);
  using Plain = HRESULT(STDAPICALLTYPE*)();

  LoadedModule() : handle_(LoadLibraryW(ModuleFile().c_str())) {
    if (handle_ == nullptr) return;
    Find(&get_class_object, "DllGetClassObject");
    Find(&can_unload_now, "DllCanUnloadNow");
    Find(&register_server, "DllRegisterServer");
    Find(&unregister_server, "DllUnregisterServer");
  }
  ~LoadedModule() {
    if (handle_ != nullptr) FreeLibrary(handle_);
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  HMODULE handle() const { return handle_; }

  OwnedReference<IClassFactory> Factory(REFCLSID id) const {
    OwnedReference<IClassFactory> factory;
    EXPECT_EQ(get_class_object(id, IID_IClassFactory, reinterpret_cast<void**>(factory.Put())),
              S_OK);
    return factory;
  }

  // Creates an object of a class; empty, with a failed expectation, if it cannot be created.
  template <typename Interface>
  OwnedReference<Interface> Create(REFCLSID id, REFIID iid) const {
    OwnedReference<Interface> object;
    const OwnedReference<IClassFactory> factory = Factory(id);
    if (!factory) return object;
    EXPECT_EQ(factory->CreateInstance(nullptr, iid, reinterpret_cast<void**>(object.Put())), S_OK);
    return object;
  }
  OwnedReference<IHashObject> CreateHash(REFCLSID id = CLSID_HashObject) const {
    return Create<IHashObject>(id, IID_IHashObject);
  }

  GetClassObject get_class_object = nullptr;
  Plain can_unload_now = nullptr;
  Plain register_server = nullptr;
  Plain unregister_server = nullptr;

 private:
  // Through a plain address: the look-up returns another function type.
  template <typename Function>
  void Find(Function* entry, LPCSTR name) const {
    *entry = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
    EXPECT_NE(*entry, nullptr) << name;
  }

  HMODULE handle_;
};

// A test with the module loaded; at its end nothing may hold the module.
class ModuleTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(module.handle(), nullptr);
    ASSERT_NE(module.get_class_object, nullptr);
    ASSERT_NE(module.can_unload_now, nullptr);
    ASSERT_EQ(module.can_unload_now(), S_OK);
    SetErrorInfo(0, nullptr);
  }
  void TearDown() override {
    if (module.can_unload_now != nullptr) {
      EXPECT_EQ(module.can_unload_now(), S_OK);
    }
  }

  LoadedModule module;
};

// The identity of an object: its IUnknown, no reference held.
inline IUnknown* IdentityOf(IUnknown* object) {
  OwnedReference<IUnknown> identity;
  EXPECT_EQ(identity.Query(object, IID_IUnknown), S_OK);
  return identity.Get();
}

// One row a class: its identifiers, its interface, whether it is a stream.
struct ClassCase {
  const char* name;
  const CLSID* both;
  const CLSID* free;
  const IID* iid;
  bool is_stream;
};

inline constexpr ClassCase kClassCases[] = {
    {"ToviStreamDigest", &CLSID_ToviStreamDigest, &CLSID_ToviStreamDigestFree,
     &IID_IToviStreamDigest, true},
    {"HashObject", &CLSID_HashObject, &CLSID_HashObjectFree, &IID_IHashObject, false},
    {"SymmetricCryptObject", &CLSID_SymmetricCryptObject, &CLSID_SymmetricCryptObjectFree,
     &IID_ISymmetricCryptObject, false},
    {"RSACrypt", &CLSID_RSACrypt, &CLSID_RSACryptFree, &IID_IRSACrypt, false},
    {"PexBigNumber", &CLSID_PexBigNumber, &CLSID_PexBigNumberFree, &IID_IPexBigNumber, false},
    {"ToviStreamCrypt", &CLSID_ToviStreamCrypt, &CLSID_ToviStreamCryptFree, &IID_IToviStreamCrypt,
     true},
};

}  // namespace mirolta::test
