// The module when an operation of the platform fails.
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "class_registration.h"
#include "class_table.h"
#include "failing_platform.h"
#include "mirolta.h"
#include "module_state.h"
#include "module_statuses.h"
#include "owned_value.h"
#include "portable/module_resources.h"
#include "raise_error.h"
#include "registrar.h"
#include "registration_fixture.h"
#include "type_info_holder.h"
#include "type_library_registration.h"

namespace mirolta::test {
namespace {

constexpr char kScript[] = "HKCR { A = s 'a' { ForceRemove B { val V = s 'v' C } NoRemove D } }";
constexpr BYTE kResource[] = "HKCR { A = s '%MODULE%' }";
constexpr DataResource kData[] = {{OLESTR("REGISTRY"), 105, kResource, sizeof kResource - 1}};
constexpr ModuleResources kResources = {nullptr, 0, kData, 1, nullptr};

HRESULT RegisterTestScript() {
  return RegisterScript(reinterpret_cast<const BYTE*>(kScript), sizeof kScript - 1, OLESTR("file"));
}
HRESULT UnregisterTestScript() {
  return UnregisterScript(reinterpret_cast<const BYTE*>(kScript), sizeof kScript - 1,
                          OLESTR("file"));
}

class ModuleFailuresTest : public RegistrationTest {
 protected:
  void SetUp() override {
    RegistrationTest::SetUp();
    instance_ = MiroltaAttachModule(&kResources);
    ASSERT_NE(instance_, nullptr);
    InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
  }
  void TearDown() override {
    faults = {};
    module_file = nullptr;
    TermModuleState();
    MiroltaDetachModule(instance_);
    RegistrationTest::TearDown();
  }

  HINSTANCE instance_ = nullptr;
};

// An operation, and how many of its calls fail with a failure that is reported, or ignored.
struct FailingCalls {
  const char* operation;
  PlatformFault* fault;
  int reported;
  int ignored;
};

// Fails each call of each operation in turn, while `run` runs on a script that is written. The
// failure is reported, except while keys are closed or enumerated during clean-up, and the same run
// completes afterwards.
void FailEachCall(std::initializer_list<FailingCalls> rows, HRESULT (*run)(),
                  const Rows& complete) {
  for (const FailingCalls& row : rows) {
    SCOPED_TRACE(row.operation);
    int reported = 0, ignored = 0;
    for (int calls_before = 0;; ++calls_before) {
      SCOPED_TRACE(calls_before);
      ASSERT_EQ(RegisterTestScript(), S_OK);
      row.fault->Arm(calls_before);
      const HRESULT status = run();
      if (!row.fault->HasStruck()) break;
      EXPECT_TRUE(status == E_ACCESSDENIED || status == S_OK) << status;
      ++(status == S_OK ? ignored : reported);
      if (status == S_OK) {
        EXPECT_EQ(AllRows(), complete);
      }
      EXPECT_EQ(run(), S_OK);
      EXPECT_EQ(AllRows(), complete);
    }
    row.fault->Disarm();
    EXPECT_EQ(reported, row.reported);
    EXPECT_EQ(ignored, row.ignored);
  }
}

TEST_F(ModuleFailuresTest, EveryRegistryCallMayFailWhileAScriptIsWritten) {
  ASSERT_EQ(RegisterTestScript(), S_OK);
  const Rows whole = AllRows();
  ASSERT_EQ(whole.size(), 6u);  // four keys and two values
  // ForceRemove: B and C below it are opened, enumerated twice and once, deleted.
  FailEachCall({{"open key", &faults.open_key, 2, 0},
                {"enumerate keys", &faults.enum_key, 3, 0},
                {"delete key", &faults.delete_key, 2, 0},
                {"create key", &faults.create_key, 4, 0},
                {"set value", &faults.set_value, 2, 0},
                {"close key", &faults.close_key, 4, 2}},
               RegisterTestScript, whole);
}

TEST_F(ModuleFailuresTest, EveryRegistryCallMayFailWhileAScriptIsRemoved) {
  ASSERT_EQ(RegisterTestScript(), S_OK);
  ASSERT_EQ(UnregisterTestScript(), S_OK);
  const Rows left = AllRows();
  EXPECT_EQ(left, (Rows{{"A", ""}, {"A\\D", ""}}));
  // A, which cannot be enumerated, counts as empty; then its deletion fails because it contains D.
  FailEachCall({{"open key", &faults.open_key, 4, 0},
                {"enumerate keys", &faults.enum_key, 4, 1},
                {"delete key", &faults.delete_key, 2, 0},
                {"close key", &faults.close_key, 0, 4},
                {"query value", &faults.query_value, 1, 0},
                {"delete value", &faults.delete_value, 1, 0}},
               UnregisterTestScript, left);
}

TEST_F(ModuleFailuresTest, AValueThatCannotBeDeletedIsReported) {
  const std::string script = "HKCR { A { val V = s 'v' } }";
  const BYTE* const text = reinterpret_cast<const BYTE*>(script.data());
  const DWORD length = static_cast<DWORD>(script.size());
  ASSERT_EQ(RegisterScript(text, length, OLESTR("file")), S_OK);
  faults.delete_value.Arm();
  EXPECT_EQ(UnregisterScript(text, length, OLESTR("file")), E_ACCESSDENIED);
  EXPECT_TRUE(faults.delete_value.HasStruck());
  // The run ended, but keys that were entered are left, and a plain one goes.
  EXPECT_EQ(UnregisterScript(text, length, OLESTR("file")), S_OK);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(ModuleFailuresTest, AScriptNeedsTheModulesNameAndItsOwnText) {
  ClassRow row = *ClassTable();
  row.registry_script = 105;
  for (const bool registers : {true, false}) {
    faults.file_name.Arm();
    EXPECT_EQ(UpdateRegistry(row, registers), E_FAIL);
    faults.lock_resource.Arm();
    EXPECT_EQ(UpdateRegistry(row, registers), static_cast<HRESULT>(0x80070715u));
  }
  EXPECT_EQ(AllRows(), Rows());

  const Text longest(MAX_PATH, OLESTR('m'));
  module_file = longest.c_str();
  EXPECT_EQ(UpdateRegistry(row, true), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"A", ""}, {"A|@", std::string(MAX_PATH, 'm')}}));
  EXPECT_EQ(UpdateRegistry(row, false), S_OK);
  const Text longer(MAX_PATH + 1, OLESTR('m'));
  module_file = longer.c_str();
  EXPECT_EQ(UpdateRegistry(row, true), E_FAIL);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(ModuleFailuresTest, TheLibraryIsFoundByTheModulesName) {
  OwnedReference<ITypeLib> library;
  OLECHAR file[MAX_PATH + 5] = {};
  faults.file_name.Arm();
  EXPECT_EQ(FindModuleTypeLibrary(library.Put(), file), E_FAIL);
  faults.file_name.Arm();
  EXPECT_EQ(RegisterModuleTypeLibrary(), E_FAIL);
  faults.file_name.Arm();
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
  faults.load_library.Arm();
  EXPECT_EQ(UnregisterModuleTypeLibrary(), S_OK);
  faults.get_address.Arm();
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
  faults.guid_text.Arm();
  EXPECT_FALSE(HasSource());
  faults.enum_value.Arm();
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
  faults.create_error.Arm();
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
  FakeLibrary no_information;
  ITypeInfo* out = reinterpret_cast<ITypeInfo*>(&no_information);
  EXPECT_EQ(holder.Get(0, &out), E_FAIL);
  EXPECT_EQ(out, nullptr);
  InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
  // Without the name the registered library is loaded.
  faults.file_name.Arm();
  EXPECT_EQ(holder.Get(0, info.Put()), TYPE_E_LIBNOTREGISTERED);
  EXPECT_TRUE(faults.file_name.HasStruck());
}

}  // namespace
}  // namespace mirolta::test
