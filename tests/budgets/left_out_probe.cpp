// left_out_probe CLASS...: whether the module has these classes and no others: their class objects, their
// registration and the type library. MIROLTA_REGISTRY names the registry file.
#include "module_objects.h"

namespace mirolta::test {
namespace {

constexpr struct {
  const char* name;
  const CLSID* id;
  const CLSID* free_id;
} kRows[] = {
    {"HashObject", &CLSID_HashObject, &CLSID_HashObjectFree},
    {"SymmetricCryptObject", &CLSID_SymmetricCryptObject, &CLSID_SymmetricCryptObjectFree},
    {"PexBigNumber", &CLSID_PexBigNumber, &CLSID_PexBigNumberFree},
    {"RSACrypt", &CLSID_RSACrypt, &CLSID_RSACryptFree},
    {"ToviStreamDigest", &CLSID_ToviStreamDigest, &CLSID_ToviStreamDigestFree},
    {"ToviStreamCrypt", &CLSID_ToviStreamCrypt, &CLSID_ToviStreamCryptFree},
};

int failures = 0;

void Expect(bool holds, const char* name, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "left_out_probe: %s: %s\n", name, what);
  ++failures;
}

bool IsRegistered(const CLSID& id) {
  OLECHAR path[6 + 39] = OLESTR("CLSID\\");
  StringFromGUID2(id, path + 6, 39);
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

void CheckClass(const char* name, const CLSID& id, bool wanted) {
  void* factory = nullptr;
  const HRESULT status = DllGetClassObject(id, IID_IClassFactory, &factory);
  Expect(status == (wanted ? S_OK : CLASS_E_CLASSNOTAVAILABLE), name, "the class object's status");
  Expect(IsRegistered(id) == wanted, name, "registration");
  if (factory == nullptr) return;
  void* object = nullptr;
  Expect(
      static_cast<IClassFactory*>(factory)->CreateInstance(nullptr, IID_IDispatch, &object) == S_OK,
      name, "creation");
  ITypeInfo* info = nullptr;
  if (object != nullptr) {
    Expect(static_cast<IDispatch*>(object)->GetTypeInfo(0, 0, &info) == S_OK, name,
           "type information");
    static_cast<IDispatch*>(object)->Release();
  }
  if (info != nullptr) info->Release();
  static_cast<IClassFactory*>(factory)->Release();
}

int Main(int count, char** names) {
  Require(DllRegisterServer(), "DllRegisterServer");
  for (const auto& row : kRows) {
    bool wanted = false;
    for (int i = 1; i < count; ++i) wanted |= std::strcmp(names[i], row.name) == 0;
    CheckClass(row.name, *row.id, wanted);
    CheckClass(row.name, *row.free_id, wanted);
  }
  ITypeLib* library = nullptr;
  Require(LoadRegTypeLib(LIBID_MIROLTALib, 1, 0, 0, &library), "LoadRegTypeLib");
  Expect(library->GetTypeInfoCount() == 2 * static_cast<UINT>(count - 1), "type library",
         "its classes");
  library->Release();
  Require(DllUnregisterServer(), "DllUnregisterServer");
  for (const auto& row : kRows) Expect(!IsRegistered(*row.id), row.name, "unregistration");
  return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace mirolta::test

int main(int count, char** names) {
  return mirolta::test::Main(count, names);
}
