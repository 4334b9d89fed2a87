// The module when an operation of the platform fails: registry, files, resources, type libraries,
// error objects. This program replaces those operations: they call the runtime's until a test makes
// one fail.
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "class_registration.h"
#include "class_table.h"
#include "mirolta.h"
#include "module_state.h"
#include "module_statuses.h"
#include "owned_value.h"
#include "platform_fault.h"
#include "portable/module_resources.h"
#include "raise_error.h"
#include "registrar.h"
#include "registration_fixture.h"
#include "type_info_holder.h"
#include "type_library_registration.h"

using mirolta::test::PlatformFault;
using mirolta::test::RuntimeOperation;

namespace {

constexpr LONG kDenied = 5;  // ERROR_ACCESS_DENIED
constexpr HRESULT kStruck = static_cast<HRESULT>(0x80070005u);

PlatformFault open_key, create_key, close_key, delete_key, delete_value, set_value, query_value,
    enum_key, enum_value, file_name, lock_resource, guid_text, create_error, load_library,
    get_address;

// Replaces the module's name and library when it is set.
const OLECHAR* module_file = nullptr;
ITypeLib* module_library = nullptr;
std::basic_string<OLECHAR> registered_file, registered_folder;
int unregistered = 0;
// Which libraries were asked for, in order.
std::string library_calls;

}  // namespace

extern "C" {

LONG RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, HKEY* out) {
  static auto* const runtime = RuntimeOperation(&RegOpenKeyExW, "RegOpenKeyExW");
  return open_key.Strikes() ? kDenied : runtime(key, path, options, access, out);
}

LONG RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR key_class, DWORD options,
                     REGSAM access, void* security, HKEY* out, DWORD* disposition) {
  static auto* const runtime = RuntimeOperation(&RegCreateKeyExW, "RegCreateKeyExW");
  if (create_key.Strikes()) return kDenied;
  return runtime(key, path, reserved, key_class, options, access, security, out, disposition);
}

// The key is closed nevertheless.
LONG RegCloseKey(HKEY key) {
  static auto* const runtime = RuntimeOperation(&RegCloseKey, "RegCloseKey");
  const LONG error = runtime(key);
  return close_key.Strikes() ? kDenied : error;
}

LONG RegDeleteKeyW(HKEY key, LPCWSTR path) {
  static auto* const runtime = RuntimeOperation(&RegDeleteKeyW, "RegDeleteKeyW");
  return delete_key.Strikes() ? kDenied : runtime(key, path);
}

LONG RegDeleteValueW(HKEY key, LPCWSTR name) {
  static auto* const runtime = RuntimeOperation(&RegDeleteValueW, "RegDeleteValueW");
  return delete_value.Strikes() ? kDenied : runtime(key, name);
}

LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size) {
  static auto* const runtime = RuntimeOperation(&RegSetValueExW, "RegSetValueExW");
  return set_value.Strikes() ? kDenied : runtime(key, name, reserved, type, data, size);
}

LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
  static auto* const runtime = RuntimeOperation(&RegQueryValueExW, "RegQueryValueExW");
  return query_value.Strikes() ? kDenied : runtime(key, name, reserved, type, data, size);
}

LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved,
                   LPWSTR key_class, DWORD* class_length, FILETIME* written) {
  static auto* const runtime = RuntimeOperation(&RegEnumKeyExW, "RegEnumKeyExW");
  if (enum_key.Strikes()) return kDenied;
  return runtime(key, index, name, length, reserved, key_class, class_length, written);
}

LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, DWORD* type,
                   BYTE* data, DWORD* size) {
  static auto* const runtime = RuntimeOperation(&RegEnumValueW, "RegEnumValueW");
  if (enum_value.Strikes()) return kDenied;
  return runtime(key, index, name, length, reserved, type, data, size);
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR file, DWORD capacity) {
  static auto* const runtime = RuntimeOperation(&GetModuleFileNameW, "GetModuleFileNameW");
  if (file_name.Strikes()) return 0;
  if (module_file == nullptr) return runtime(module, file, capacity);
  // Cuts a name that is too long, as the platform does.
  DWORD length = 0;
  while (length < capacity && module_file[length] != 0) {
    file[length] = module_file[length];
    ++length;
  }
  if (length < capacity) file[length] = 0;
  return length;
}

void* LockResource(void* loaded) {
  static auto* const runtime = RuntimeOperation(&LockResource, "LockResource");
  return lock_resource.Strikes() ? nullptr : runtime(loaded);
}

INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity) {
  static auto* const runtime = RuntimeOperation(&StringFromGUID2, "StringFromGUID2");
  return guid_text.Strikes() ? 0 : runtime(id, text, capacity);
}

HRESULT LoadTypeLib(const OLECHAR* file, ITypeLib** out) {
  static auto* const runtime = RuntimeOperation(&LoadTypeLib, "LoadTypeLib");
  library_calls += "file ";
  if (module_library == nullptr) return runtime(file, out);
  *out = module_library;
  module_library->AddRef();
  return S_OK;
}

HRESULT LoadRegTypeLib(REFGUID library, WORD major, WORD minor, LCID locale, ITypeLib** out) {
  static auto* const runtime = RuntimeOperation(&LoadRegTypeLib, "LoadRegTypeLib");
  library_calls += "registered " + std::to_string(major) + "." + std::to_string(minor) + " " +
                   std::to_string(locale) + " ";
  return runtime(library, major, minor, locale, out);
}

HRESULT RegisterTypeLib(ITypeLib* library, OLECHAR* file, OLECHAR* help_directory) {
  static auto* const runtime = RuntimeOperation(&RegisterTypeLib, "RegisterTypeLib");
  if (module_library == nullptr) return runtime(library, file, help_directory);
  registered_file = file;
  registered_folder = help_directory;
  return S_FALSE;
}

HMODULE LoadLibraryW(LPCWSTR file) {
  static auto* const runtime = RuntimeOperation(&LoadLibraryW, "LoadLibraryW");
  return load_library.Strikes() ? nullptr : runtime(file);
}

static LONG WINAPI Unregistered() {
  ++unregistered;
  return E_ABORT;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  static auto* const runtime = RuntimeOperation(&GetProcAddress, "GetProcAddress");
  if (get_address.Strikes()) return nullptr;
  return module_library != nullptr ? Unregistered : runtime(module, name);
}

}  // extern "C"

namespace {

// An error object without error information.
class MuteError final : public ICreateErrorInfo {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE SetGUID(REFGUID) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD) override { return S_OK; }

  ULONG references = 0;
};
MuteError mute_error;

}  // namespace

extern "C" HRESULT CreateErrorInfo(ICreateErrorInfo** out) {
  static auto* const runtime = RuntimeOperation(&CreateErrorInfo, "CreateErrorInfo");
  if (!create_error.Strikes()) return runtime(out);
  *out = &mute_error;
  mute_error.AddRef();
  return S_OK;
}

namespace mirolta::test {
namespace {

constexpr char kScript[] = "HKCR { A = s 'a' { ForceRemove B { val V = s 'v' C } NoRemove D } }";
constexpr BYTE kResource[] = "HKCR { A = s '%MODULE%' }";
constexpr DataResource kData[] = {{OLESTR("REGISTRY"), 105, kResource, sizeof kResource - 1}};
constexpr ModuleResources kResources = {nullptr, 0, kData, 1, nullptr};

class ModuleFailuresTest : public RegistrationTest {
 protected:
  void SetUp() override {
    RegistrationTest::SetUp();
    instance_ = MiroltaAttachModule(&kResources);
    ASSERT_NE(instance_, nullptr);
    InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
  }
  void TearDown() override {
    for (PlatformFault* fault :
         {&open_key, &create_key, &close_key, &delete_key, &delete_value, &set_value, &query_value,
          &enum_key, &enum_value, &file_name, &lock_resource, &guid_text, &create_error,
          &load_library, &get_address}) {
      fault->Disarm();
    }
    module_file = nullptr;
    TermModuleState();
    MiroltaDetachModule(instance_);
    RegistrationTest::TearDown();
  }

  static HRESULT Register() {
    return RegisterScript(reinterpret_cast<const BYTE*>(kScript), sizeof kScript - 1,
                          OLESTR("file"));
  }
  static HRESULT Unregister() {
    return UnregisterScript(reinterpret_cast<const BYTE*>(kScript), sizeof kScript - 1,
                            OLESTR("file"));
  }

  HINSTANCE instance_ = nullptr;
};

// Fails each call of each operation in turn. The failure is reported, except while keys are closed
// or enumerated during clean-up, and the same call completes afterwards.
TEST_F(ModuleFailuresTest, EveryRegistryCallMayFailWhileAScriptIsWritten) {
  ASSERT_EQ(Register(), S_OK);
  const Rows whole = AllRows();
  ASSERT_EQ(whole.size(), 6u);  // four keys and two values
  struct Row {
    PlatformFault* fault;
    int reported;  // calls whose failure the script reports
    int ignored;   // others
  };
  // ForceRemove: B and C below it are opened, enumerated twice and once, deleted.
  const Row kRows[] = {{&open_key, 2, 0},   {&enum_key, 3, 0},  {&delete_key, 2, 0},
                       {&create_key, 4, 0}, {&set_value, 2, 0}, {&close_key, 4, 2}};
  for (size_t i = 0; i < std::size(kRows); ++i) {
    const Row& row = kRows[i];
    int reported = 0, ignored = 0;
    for (int calls_before = 0;; ++calls_before) {
      ASSERT_EQ(Register(), S_OK);
      row.fault->Arm(calls_before);
      const HRESULT status = Register();
      if (!row.fault->HasStruck()) {
        row.fault->Disarm();
        break;
      }
      EXPECT_TRUE(status == kStruck || status == S_OK) << i << " " << calls_before;
      ++(status == S_OK ? ignored : reported);
      if (status == S_OK) {
        EXPECT_EQ(AllRows(), whole);
      }
      EXPECT_EQ(Register(), S_OK);
      EXPECT_EQ(AllRows(), whole) << i << " " << calls_before;
    }
    EXPECT_EQ(reported, row.reported) << i;
    EXPECT_EQ(ignored, row.ignored) << i;
  }
}

TEST_F(ModuleFailuresTest, EveryRegistryCallMayFailWhileAScriptIsRemoved) {
  ASSERT_EQ(Register(), S_OK);
  ASSERT_EQ(Unregister(), S_OK);
  const Rows left = AllRows();
  EXPECT_EQ(left, (Rows{{"A", ""}, {"A\\D", ""}}));
  PlatformFault* const kFaults[] = {&open_key,  &enum_key,    &delete_key,
                                    &close_key, &query_value, &delete_value};
  // A, which cannot be enumerated, counts as empty; then its deletion fails because it contains D.
  const int kReported[] = {4, 4, 2, 0, 1, 1};
  for (size_t i = 0; i < std::size(kFaults); ++i) {
    PlatformFault& fault = *kFaults[i];
    int reported = 0;
    for (int calls_before = 0;; ++calls_before) {
      ASSERT_EQ(Register(), S_OK);
      fault.Arm(calls_before);
      const HRESULT status = Unregister();
      if (!fault.HasStruck()) {
        fault.Disarm();
        break;
      }
      EXPECT_TRUE(status == kStruck || status == S_OK) << i << " " << calls_before;
      if (status == kStruck) ++reported;
      EXPECT_EQ(Unregister(), S_OK);
      EXPECT_EQ(AllRows(), left) << i << " " << calls_before;
    }
    EXPECT_EQ(reported, kReported[i]) << i;
  }
}

TEST_F(ModuleFailuresTest, AValueThatCannotBeDeletedIsReported) {
  const std::string script = "HKCR { A { val V = s 'v' } }";
  const BYTE* const text = reinterpret_cast<const BYTE*>(script.data());
  const DWORD length = static_cast<DWORD>(script.size());
  ASSERT_EQ(RegisterScript(text, length, OLESTR("file")), S_OK);
  delete_value.Arm();
  EXPECT_EQ(UnregisterScript(text, length, OLESTR("file")), kStruck);
  EXPECT_TRUE(delete_value.HasStruck());
  // The run ended, but keys that were entered are left, and a plain one goes.
  EXPECT_EQ(UnregisterScript(text, length, OLESTR("file")), S_OK);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(ModuleFailuresTest, AScriptNeedsTheModulesNameAndItsOwnText) {
  ClassRow row = *ClassTable();
  row.registry_script = 105;
  for (const bool registers : {true, false}) {
    file_name.Arm();
    EXPECT_EQ(UpdateRegistry(row, registers), E_FAIL);
    lock_resource.Arm();
    EXPECT_EQ(UpdateRegistry(row, registers), static_cast<HRESULT>(0x80070715u));
  }
  EXPECT_EQ(AllRows(), Rows());

  const std::basic_string<OLECHAR> longest(MAX_PATH, OLESTR('m'));
  module_file = longest.c_str();
  EXPECT_EQ(UpdateRegistry(row, true), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"A", ""}, {"A|@", std::string(MAX_PATH, 'm')}}));
  EXPECT_EQ(UpdateRegistry(row, false), S_OK);
  const std::basic_string<OLECHAR> longer(MAX_PATH + 1, OLESTR('m'));
  module_file = longer.c_str();
  EXPECT_EQ(UpdateRegistry(row, true), E_FAIL);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(ModuleFailuresTest, TheLibraryIsFoundByTheModulesName) {
  OwnedReference<ITypeLib> library;
  OLECHAR file[MAX_PATH + 5] = {};
  file_name.Arm();
  EXPECT_EQ(FindModuleTypeLibrary(library.Put(), file), E_FAIL);
  file_name.Arm();
  EXPECT_EQ(RegisterModuleTypeLibrary(), E_FAIL);
  file_name.Arm();
  EXPECT_EQ(UnregisterModuleTypeLibrary(), E_FAIL);
}

// The class table with rows that only record calls.
class RegistrationWalkTest : public ModuleFailuresTest {
 protected:
  void SetUp() override {
    ModuleFailuresTest::SetUp();
    for (ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
      kept_.push_back(*row);
      row->update_registry = [](const ClassRow& of, bool registers) -> HRESULT {
        walked.push_back({&of, registers});
        return walked.size() == fails_at || fails_at == 0 ? E_ABORT : S_OK;
      };
    }
    walked.clear();
  }
  void TearDown() override {
    for (size_t i = 0; i < kept_.size(); ++i) ClassTable()[i] = kept_[i];
    ModuleFailuresTest::TearDown();
  }
  static void ExpectWalked(size_t count, bool registers) {
    ASSERT_EQ(walked.size(), count);
    for (size_t i = 0; i < count; ++i) {
      EXPECT_EQ(walked[i].first, ClassTable() + i) << i;
      EXPECT_EQ(walked[i].second, registers) << i;
    }
  }

  static std::vector<std::pair<const ClassRow*, bool>> walked;
  static size_t fails_at;  // 0: always

 private:
  std::vector<ClassRow> kept_;
};
std::vector<std::pair<const ClassRow*, bool>> RegistrationWalkTest::walked;
size_t RegistrationWalkTest::fails_at = 0;

TEST_F(RegistrationWalkTest, RegistrationEndsAtTheFirstFailure) {
  fails_at = 5;
  EXPECT_EQ(RegisterModule(), E_ABORT);
  ExpectWalked(5, true);
}

// This program has no type library.
TEST_F(RegistrationWalkTest, TheLibrarysStatusIsTheModules) {
  fails_at = 100;
  EXPECT_EQ(RegisterModule(), TYPE_E_CANTLOADLIBRARY);
  ExpectWalked(12, true);
}

TEST_F(RegistrationWalkTest, UnregistrationGoesOnPastFailuresToTheLibrary) {
  for (const size_t failing : {size_t{0}, size_t{1}, size_t{12}}) {
    walked.clear();
    library_calls.clear();
    fails_at = failing;
    EXPECT_EQ(UnregisterModule(), S_OK);
    ExpectWalked(12, false);
    EXPECT_EQ(library_calls, "file file ");
  }
}

// Replaces the module's library, with attributes of its own, or by none.
class FakeLibrary final : public ITypeLib {
 public:
  FakeLibrary() { module_library = this; }
  ~FakeLibrary() { module_library = nullptr; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  UINT STDMETHODCALLTYPE GetTypeInfoCount() override { return 0; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT, TYPEKIND*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** out) override {
    *out = FAILED(status) ? nullptr : &attributes;
    if (SUCCEEDED(status)) ++held;
    return status;
  }
  HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDocumentation(INT, BSTR*, BSTR*, DWORD*, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE IsName(LPOLESTR, ULONG, BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindName(LPOLESTR, ULONG, ITypeInfo**, MEMBERID*, USHORT*) override {
    return E_NOTIMPL;
  }
  void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR*) override { --held; }

  HRESULT status = S_OK;
  TLIBATTR attributes = {};
  int held = 0;
  ULONG references = 1;
};

TEST_F(ModuleFailuresTest, TheHelpFolderEndsBehindTheLastSeparator) {
  FakeLibrary library;
  const OLECHAR* const kFiles[][2] = {
      {OLESTR("C:\\folder.x\\module.dll"), OLESTR("C:\\folder.x\\")},
      {OLESTR("C:module.dll"), OLESTR("C:")},
      {OLESTR("/folder/module.so"), OLESTR("/folder/")},
      {OLESTR("module"), OLESTR("")},
  };
  for (const auto& [file, folder] : kFiles) {
    module_file = file;
    EXPECT_EQ(RegisterModuleTypeLibrary(), S_FALSE);
    EXPECT_EQ(registered_file, file);
    EXPECT_EQ(registered_folder, folder);
    EXPECT_EQ(library.references, 1u);
  }
}

TEST_F(ModuleFailuresTest, ALibraryIsUnregisteredIfThePlatformCan) {
  FakeLibrary library;
  unregistered = 0;
  library.status = E_OUTOFMEMORY;
  EXPECT_EQ(UnregisterModuleTypeLibrary(), E_OUTOFMEMORY);
  library.status = S_OK;
  load_library.Arm();
  EXPECT_EQ(UnregisterModuleTypeLibrary(), S_OK);
  get_address.Arm();
  EXPECT_EQ(UnregisterModuleTypeLibrary(), S_OK);
  EXPECT_EQ(unregistered, 0);
  EXPECT_EQ(UnregisterModuleTypeLibrary(), E_ABORT);
  EXPECT_EQ(unregistered, 1);
  EXPECT_EQ(library.references, 1u);
  EXPECT_EQ(library.held, 0);
}

class ErrorSourceTest : public ModuleFailuresTest {
 protected:
  static bool HasSource() {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(RaiseError(CLSID_HashObject, 10104, GUID_NULL, E_ABORT, nullptr), E_ABORT);
    OwnedReference<IErrorInfo> info;
    EXPECT_EQ(GetErrorInfo(0, info.Put()), S_OK);
    OwnedBstr source;
    return info && info->GetSource(source.Put()) == S_OK && source.Get() != nullptr;
  }
};

TEST_F(ErrorSourceTest, IsLeftOutIfItCannotBeRead) {
  OLECHAR path[64] = OLESTR("CLSID\\");
  ASSERT_GT(StringFromGUID2(CLSID_HashObject, path + 6, 39), 0);
  WriteKey(Narrow(path), OLESTR("source"));
  EXPECT_TRUE(HasSource());
  guid_text.Arm();
  EXPECT_FALSE(HasSource());
  enum_value.Arm();
  EXPECT_FALSE(HasSource());
  EXPECT_TRUE(HasSource());

  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
  const DWORD number = 0x00410041;
  EXPECT_EQ(RegSetValueExW(key, nullptr, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                           sizeof number),
            ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_FALSE(HasSource());
}

TEST_F(ErrorSourceTest, AnErrorWithoutInformationIsNotPublished) {
  SetErrorInfo(0, nullptr);
  create_error.Arm();
  EXPECT_EQ(RaiseError(CLSID_HashObject, 10104, GUID_NULL, 0, nullptr), kNotInitialized);
  OwnedReference<IErrorInfo> info;
  EXPECT_EQ(GetErrorInfo(0, info.Put()), S_FALSE);
  EXPECT_EQ(mute_error.references, 0u);
}

TEST_F(ModuleFailuresTest, TheModulesOwnLibraryComesBeforeTheRegisteredOne) {
  for (const LCID locale : {LCID{0}, LCID{0x409}, LCID{0xFFFFFFFF}}) {
    TypeInfoHolder holder(IID_IHashObject);
    OwnedReference<ITypeInfo> info;
    library_calls.clear();
    EXPECT_EQ(holder.Get(locale, info.Put()), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(library_calls, "file registered 1.0 " + std::to_string(locale) + " ");
  }
  // With a library of its own no other is loaded; this one lacks the interface.
  FakeLibrary library;
  TypeInfoHolder holder(IID_IHashObject);
  OwnedReference<ITypeInfo> info;
  library_calls.clear();
  EXPECT_EQ(holder.Get(0x409, info.Put()), E_NOTIMPL);
  EXPECT_EQ(library_calls, "file ");
}

TEST_F(ModuleFailuresTest, WithoutAModuleThereIsNoTypeInformation) {
  TypeInfoHolder holder(IID_IHashObject);
  TermModuleState();
  OwnedReference<ITypeInfo> info;
  EXPECT_EQ(holder.Get(0, info.Put()), E_FAIL);
  EXPECT_FALSE(info);
  InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
  // Without the name the registered library is loaded.
  file_name.Arm();
  EXPECT_EQ(holder.Get(0, info.Put()), TYPE_E_LIBNOTREGISTERED);
  EXPECT_TRUE(file_name.HasStruck());
}

}  // namespace
}  // namespace mirolta::test
