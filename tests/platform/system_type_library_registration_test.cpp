#include <vector>

#include "portable/registry_mode.h"
#include "runtime_allocations.h"
#include "system_support.h"
#include "system_test_module.h"

namespace mirolta {
namespace {

constexpr char kModuleFile[] = SYSTEM_TEST_MODULE;
constexpr char16_t kLibraryKey[] = u"TypeLib\\{7A1E0003-1111-4222-8333-444455556666}";
constexpr char16_t kInterfaceKey[] = u"Interface\\{7A1E0002-1111-4222-8333-444455556666}";
constexpr const char16_t* kPlatform = sizeof(void*) == 8 ? u"linux64" : u"linux32";
constexpr SYSKIND kSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

std::string TextAt(const std::u16string& path, const char16_t* name = nullptr) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != 0) return "<no key>";
  WCHAR text[512];
  DWORD size = sizeof(text);
  const LONG error =
      RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
  RegCloseKey(key);
  return error == 0 ? Narrow(text) : "<no value>";
}

class TypeLibraryRegistration : public RegistryTest {
 protected:
  TypeLibraryRegistration() { EXPECT_EQ(LoadTypeLib(Wide(kModuleFile).c_str(), &library_), S_OK); }
  ~TypeLibraryRegistration() override { library_->Release(); }

  HRESULT Register() {
    std::u16string file = Wide(kModuleFile);
    std::u16string folder = u"/help";
    return RegisterTypeLib(library_, file.data(), folder.data());
  }
  ITypeLib* library_ = nullptr;
};

TEST_F(TypeLibraryRegistration, WritesItsRows) {
  ASSERT_EQ(Register(), S_OK);
  const std::u16string key = std::u16string(kLibraryKey) + u"\\1.12";  // hexadecimal
  EXPECT_EQ(TextAt(key), "Test 1.18 Type Library");
  EXPECT_EQ(TextAt(key + u"\\0\\" + kPlatform), kModuleFile);
  EXPECT_EQ(TextAt(key + u"\\FLAGS"), "0");
  EXPECT_EQ(TextAt(key + u"\\HELPDIR"), "/help");
  const std::u16string row = kInterfaceKey;
  EXPECT_EQ(TextAt(row), "ITest");
  EXPECT_EQ(TextAt(row + u"\\ProxyStubClsid"), "{00020424-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextAt(row + u"\\ProxyStubClsid32"), "{00020424-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextAt(row + u"\\TypeLib"), "{7A1E0003-1111-4222-8333-444455556666}");
  EXPECT_EQ(TextAt(row + u"\\TypeLib", u"Version"), "1.12");
  // Only interfaces have such rows.
  EXPECT_EQ(TextAt(u"Interface\\{7A1E0001-1111-4222-8333-444455556666}"), "<no key>");

  const std::string once = ReadFile(file_);
  ASSERT_EQ(Register(), S_OK);
  EXPECT_EQ(ReadFile(file_), once);
}

TEST_F(TypeLibraryRegistration, TheRegisteredLibraryLoads) {
  ITypeLib* loaded = library_;
  EXPECT_EQ(LoadRegTypeLib(kTestLibrary, 1, 0x12, 0, &loaded), TYPE_E_LIBNOTREGISTERED);
  EXPECT_EQ(loaded, nullptr);
  ASSERT_EQ(Register(), S_OK);
  for (const WORD minor :
       {WORD{0}, WORD{0x11}, WORD{0x12}}) {  // a higher minor version serves lower ones
    ASSERT_EQ(LoadRegTypeLib(kTestLibrary, 1, minor, 0x409, &loaded), S_OK) << minor;
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(loaded->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, kTestLibrary);
    EXPECT_EQ(attributes->wMinorVerNum, 0x12);
    loaded->ReleaseTLibAttr(attributes);
    loaded->Release();
  }
  EXPECT_EQ(LoadRegTypeLib(kTestLibrary, 1, 0x13, 0, &loaded), TYPE_E_LIBNOTREGISTERED);
  EXPECT_EQ(LoadRegTypeLib(kTestLibrary, 2, 0, 0, &loaded), TYPE_E_LIBNOTREGISTERED);
  EXPECT_EQ(LoadRegTypeLib(kTestInterface, 1, 0, 0, &loaded), TYPE_E_LIBNOTREGISTERED);
  EXPECT_EQ(LoadRegTypeLib(kTestLibrary, 1, 0, 0, nullptr), E_INVALIDARG);
}

TEST_F(TypeLibraryRegistration, UnregisteringRemovesItsRowsOnly) {
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, kSystem), TYPE_E_REGISTRYACCESS);
  ASSERT_EQ(Register(), S_OK);
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, u"Interface\\{other}\\TypeLib", 0, nullptr, 0,
                            KEY_WRITE, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x11, 0, kSystem), TYPE_E_REGISTRYACCESS);
  EXPECT_EQ(TextAt(kInterfaceKey), "ITest");
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, kSystem), S_OK);
  EXPECT_EQ(TextAt(kInterfaceKey), "<no key>");
  EXPECT_EQ(TextAt(kLibraryKey), "<no key>");
  EXPECT_EQ(TextAt(u"Interface\\{other}"), "<no value>");
}

// One version has a file for each locale and system; shared rows are removed with the last.
TEST_F(TypeLibraryRegistration, OtherLocalesAndSystemsStay) {
  const std::u16string version = std::u16string(kLibraryKey) + u"\\1.12";
  const std::u16string own = version + u"\\0\\" + kPlatform;
  const SYSKIND other_system = kSystem == SYS_WIN64 ? SYS_WIN32 : SYS_WIN64;
  const std::u16string other = other_system == SYS_WIN64 ? u"\\linux64" : u"\\linux32";
  const std::u16string others[] = {version + u"\\0" + other, version + u"\\409\\" + kPlatform};
  ASSERT_EQ(Register(), S_OK);
  for (const std::u16string& path : others) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
  }
  // Neither is known.
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0x809, kSystem), TYPE_E_REGISTRYACCESS);
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0x409, other_system), TYPE_E_REGISTRYACCESS);
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, SYS_MAC), TYPE_E_REGISTRYACCESS);
  EXPECT_EQ(TextAt(own), kModuleFile);

  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, kSystem), S_OK);
  EXPECT_EQ(TextAt(own), "<no key>");
  EXPECT_EQ(TextAt(others[0]), "<no value>");
  EXPECT_EQ(TextAt(others[1]), "<no value>");
  EXPECT_EQ(TextAt(version + u"\\HELPDIR"), "/help");
  EXPECT_EQ(TextAt(kInterfaceKey), "ITest");
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, kSystem), TYPE_E_REGISTRYACCESS);

  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, other_system), S_OK);
  EXPECT_EQ(TextAt(version + u"\\0"), "<no key>");
  EXPECT_EQ(TextAt(others[1]), "<no value>");
  EXPECT_EQ(TextAt(kInterfaceKey), "ITest");
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0x409, kSystem), S_OK);
  EXPECT_EQ(TextAt(kLibraryKey), "<no key>");
  EXPECT_EQ(TextAt(kInterfaceKey), "<no key>");
}

TEST_F(TypeLibraryRegistration, OtherVersionsStay) {
  ASSERT_EQ(Register(), S_OK);
  const std::u16string other = std::u16string(kLibraryKey) + u"\\2.0";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, other.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                            &key, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(UnRegisterTypeLib(kTestLibrary, 1, 0x12, 0, kSystem), S_OK);
  EXPECT_EQ(TextAt(other), "<no value>");
}

TEST_F(TypeLibraryRegistration, FailuresAreReported) {
  std::u16string file = u"x";
  EXPECT_EQ(RegisterTypeLib(nullptr, file.data(), nullptr), E_INVALIDARG);
  EXPECT_EQ(RegisterTypeLib(library_, nullptr, nullptr), E_INVALIDARG);
  WriteFile(file_, "damaged");
  EXPECT_EQ(Register(), TYPE_E_REGISTRYACCESS);
  ITypeLib* loaded = nullptr;
  EXPECT_EQ(LoadRegTypeLib(kTestLibrary, 1, 0, 0, &loaded), TYPE_E_REGISTRYACCESS);
  WriteFile(file_, "");
  EXPECT_GT(test::FailEachAllocation([&] { return Register(); }), 10);
  // The file is not locked after a failure.
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace mirolta
