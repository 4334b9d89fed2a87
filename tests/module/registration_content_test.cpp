// What registering and unregistering the module leaves in the registry, row by row.
#include <algorithm>
#include <vector>

#include "class_table.h"
#include "loaded_module.h"
#include "portable/test_hooks.h"
#include "registration_fixture.h"

namespace mirolta::test {
namespace {

constexpr char kLibrary[] = "{D0503D72-C0D7-4CDA-BD03-8D7496F936DA}";
constexpr const char* kPlatform = sizeof(void*) == 8 ? "linux64" : "linux32";

std::string RegistryText(const GUID& id) {
  OLECHAR text[39] = {};
  EXPECT_EQ(StringFromGUID2(id, text, 39), 39);
  return Narrow(text);
}

class RegistrationContentTest : public RegistrationTest {
 protected:
  void SetUp() override {
    RegistrationTest::SetUp();
    ASSERT_NE(module_.handle(), nullptr);
  }

  // The module's file as the runtime names it.
  std::string File() {
    OLECHAR file[MAX_PATH + 1] = {};
    EXPECT_GT(GetModuleFileNameW(module_.handle(), file, MAX_PATH + 1), 0u);
    return Narrow(file);
  }

  // The rows of one class.
  Rows ClassRows(const ClassRow& row) {
    const std::string id = RegistryText(*row.id);
    const std::string versioned = Narrow(row.prog_id);
    const std::string stem = Narrow(row.version_independent_prog_id);
    const std::string description = Narrow(row.description);
    const std::string key = "CLSID\\" + id;
    return {{versioned, ""},
            {versioned + "|@", description},
            {versioned + "\\CLSID", ""},
            {versioned + "\\CLSID|@", id},
            {stem, ""},
            {stem + "|@", description},
            {stem + "\\CLSID", ""},
            {stem + "\\CLSID|@", id},
            {stem + "\\CurVer", ""},
            {stem + "\\CurVer|@", versioned},
            {key, ""},
            {key + "|@", description},
            {key + "\\ProgID", ""},
            {key + "\\ProgID|@", versioned},
            {key + "\\VersionIndependentProgID", ""},
            {key + "\\VersionIndependentProgID|@", stem},
            {key + "\\Programmable", ""},
            {key + "\\InprocServer32", ""},
            {key + "\\InprocServer32|@", File()},
            {key + "\\InprocServer32|ThreadingModel", Narrow(row.threading_model)},
            {key + "\\TypeLib", ""},
            {key + "\\TypeLib|@", kLibrary}};
  }

  Rows LibraryRows() {
    const std::string file = File();
    const std::string key = std::string("TypeLib\\") + kLibrary;
    Rows rows = {{"TypeLib", ""},
                 {key, ""},
                 {key + "\\1.0", ""},
                 {key + "\\1.0|@", "Mirolta 1.0 Type Library"},
                 {key + "\\1.0\\0", ""},
                 {key + "\\1.0\\0\\" + kPlatform, ""},
                 {key + "\\1.0\\0\\" + kPlatform + "|@", file},
                 {key + "\\1.0\\FLAGS", ""},
                 {key + "\\1.0\\FLAGS|@", "0"},
                 {key + "\\1.0\\HELPDIR", ""},
                 {key + "\\1.0\\HELPDIR|@", file.substr(0, file.rfind('/') + 1)},
                 {"Interface", ""}};
    for (const ClassCase& one : kClassCases) {
      const std::string face = "Interface\\" + RegistryText(*one.iid);
      const char* const marshaler = "{00020424-0000-0000-C000-000000000046}";
      rows.merge(Rows{{face, ""},
                      {face + "|@", std::string("I") + one.name},
                      {face + "\\ProxyStubClsid", ""},
                      {face + "\\ProxyStubClsid|@", marshaler},
                      {face + "\\ProxyStubClsid32", ""},
                      {face + "\\ProxyStubClsid32|@", marshaler},
                      {face + "\\TypeLib", ""},
                      {face + "\\TypeLib|@", kLibrary},
                      {face + "\\TypeLib|Version", "1.0"}});
    }
    return rows;
  }

  Rows Everything() {
    Rows rows = LibraryRows();
    rows["CLSID"] = "";
    for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) rows.merge(ClassRows(*row));
    return rows;
  }

  LoadedModule module_;
};

TEST_F(RegistrationContentTest, RegistersEveryRowOfTheClassTableAndTheLibrary) {
  ASSERT_EQ(module_.register_server(), S_OK);
  const Rows expected = Everything();
  ASSERT_EQ(expected.size(), 1 + 12 * 22 + 12 + 6 * 9u);
  EXPECT_EQ(AllRows(), expected);
}

// The script of a number, whatever other scripts add, is that of both rows of one class.
TEST_F(RegistrationContentTest, EachScriptIsThatOfOneClass) {
  const struct {
    WORD number;
    const char* stem;
  } kScripts[] = {
      {105, "Symmetric"},          {106, "RSA"},         {107, "Number"}, {108, "ToviStreamCrypt"},
      {10102, "ToviStreamDigest"}, {10103, "HashObject"}};
  for (const auto& script : kScripts) {
    const HRSRC resource =
        FindResourceW(module_.handle(), MAKEINTRESOURCEW(script.number), OLESTR("REGISTRY"));
    ASSERT_NE(resource, nullptr) << script.number;
    const char* const bytes =
        static_cast<const char*>(LockResource(LoadResource(module_.handle(), resource)));
    ASSERT_NE(bytes, nullptr);
    const std::string text(bytes, SizeofResource(module_.handle(), resource));
    const std::string stem = std::string("Vardeko.crypt.") + script.stem;
    std::vector<std::string> names;
    for (size_t at = 0; (at = text.find("\tProgID = s '", at)) != std::string::npos;) {
      at = text.find('\'', at) + 1;
      names.push_back(text.substr(at, text.find('\'', at) - at));
    }
    EXPECT_EQ(names, (std::vector<std::string>{stem + ".1", stem + ".free.1"}));
  }
}

// One class in full, written out.
TEST_F(RegistrationContentTest, RegistersHashObject) {
  ASSERT_EQ(module_.register_server(), S_OK);
  const Rows rows = AllRows();
  const std::string both = "CLSID\\{9D56F139-1F04-4283-AED7-3DB89AFF00FD}";
  const std::string free = "CLSID\\{FECAFCBB-A8C3-404D-A42B-53AD9FD47737}";
  EXPECT_EQ(rows.at(both + "|@"), "Vardeko HashObject Class");
  EXPECT_EQ(rows.at(both + "\\ProgID|@"), "Vardeko.crypt.HashObject.1");
  EXPECT_EQ(rows.at(both + "\\VersionIndependentProgID|@"), "Vardeko.crypt.HashObject");
  EXPECT_EQ(rows.at(both + "\\InprocServer32|@"), File());
  EXPECT_EQ(rows.at(both + "\\InprocServer32|ThreadingModel"), "Both");
  EXPECT_EQ(rows.at(both + "\\Programmable"), "");
  EXPECT_EQ(rows.at(free + "|@"), "Vardeko HashObject Class (freethreaded)");
  EXPECT_EQ(rows.at(free + "\\ProgID|@"), "Vardeko.crypt.HashObject.free.1");
  EXPECT_EQ(rows.at(free + "\\InprocServer32|ThreadingModel"), "Free");
  EXPECT_EQ(rows.at("Vardeko.crypt.HashObject\\CurVer|@"), "Vardeko.crypt.HashObject.1");
  EXPECT_EQ(rows.at("Vardeko.crypt.HashObject.free.1\\CLSID|@"), free.substr(6));
}

TEST_F(RegistrationContentTest, RegisteringTwiceLeavesTheSame) {
  ASSERT_EQ(module_.register_server(), S_OK);
  const Rows once = AllRows();
  ASSERT_EQ(module_.register_server(), S_OK);
  EXPECT_EQ(AllRows(), once);
  // Class keys are rebuilt: foreign content is removed.
  WriteKey("CLSID\\{9D56F139-1F04-4283-AED7-3DB89AFF00FD}\\Programmable\\Other", OLESTR("x"));
  WriteKey("CLSID\\{9D56F139-1F04-4283-AED7-3DB89AFF00FD}\\Other", OLESTR("x"));
  ASSERT_EQ(module_.register_server(), S_OK);
  EXPECT_EQ(AllRows(), once);
}

TEST_F(RegistrationContentTest, UnregisteringKeepsTheKeyOfAllClasses) {
  ASSERT_EQ(module_.register_server(), S_OK);
  ASSERT_EQ(module_.unregister_server(), S_OK);
  Rows left = AllRows();
  EXPECT_EQ(left.erase("CLSID"), 1u);
  // Parents that the type library's registration made.
  left.erase("Interface");
  left.erase("TypeLib");
  EXPECT_EQ(left, Rows());
  EXPECT_EQ(module_.unregister_server(), S_OK);
}

TEST_F(RegistrationContentTest, UnregisteringWhenNothingIsRegisteredSucceeds) {
  EXPECT_EQ(module_.unregister_server(), S_OK);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(RegistrationContentTest, SubkeysOfOthersUnderTheProgIdsStay) {
  ASSERT_EQ(module_.register_server(), S_OK);
  WriteKey("Vardeko.crypt.RSA\\shell", OLESTR("x"));
  WriteKey("CLSID\\{00000000-0000-0000-0000-000000000001}", OLESTR("other"));
  ASSERT_EQ(module_.unregister_server(), S_OK);
  const Rows left = AllRows();
  EXPECT_EQ(left.count("Vardeko.crypt.RSA\\shell|@"), 1u);
  EXPECT_EQ(left.count("Vardeko.crypt.RSA"), 1u);
  EXPECT_EQ(left.count("Vardeko.crypt.RSA|@"), 0u);  // the module's own description
  EXPECT_EQ(left.count("Vardeko.crypt.RSA\\CLSID"), 0u);
  EXPECT_EQ(left.count("Vardeko.crypt.RSA\\CurVer"), 0u);
  EXPECT_EQ(left.count("Vardeko.crypt.RSA.1"), 0u);
  EXPECT_EQ(left.at("CLSID\\{00000000-0000-0000-0000-000000000001}|@"), "other");
}

TEST_F(RegistrationContentTest, RegisteredClassesCanBeCreatedByName) {
  ASSERT_EQ(module_.register_server(), S_OK);
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    for (const OLECHAR* name : {row->prog_id, row->version_independent_prog_id}) {
      SCOPED_TRACE(Narrow(name));
      CLSID id = {};
      ASSERT_EQ(CLSIDFromProgID(name, &id), S_OK);
      EXPECT_TRUE(id == *row->id);
      OwnedReference<IDispatch> object;
      EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                 reinterpret_cast<void**>(object.Put())),
                S_OK);
    }
  }
  OwnedReference<ITypeLib> library;
  EXPECT_EQ(LoadRegTypeLib(LIBID_MIROLTALib, 1, 0, 0, library.Put()), S_OK);
}

// Whatever allocation fails, registration fails with it and leaves the rows before it, or none of
// them if they could not be put in place; the next attempt completes.
TEST_F(RegistrationContentTest, AFailingWriteEndsRegistration) {
  constexpr size_t kRowsOfAClass = 22;
  const Rows all = Everything();
  size_t most_left = 0;
  int failures = 0;
  // Steps that do not divide the allocations of one class, so that every kind is hit.
  for (LONG allowed = 0;; allowed += 37) {
    SCOPED_TRACE(allowed);
    const Rows before = AllRows();
    MiroltaFailAllocationAfter(allowed);
    const HRESULT status = module_.register_server();
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    if (!failed) {
      EXPECT_EQ(status, S_OK);
      break;
    }
    if (FAILED(status)) ++failures;
    const Rows left = AllRows();
    for (const auto& [key, text] : left) {
      ASSERT_EQ(all.count(key), 1u) << key;
      EXPECT_EQ(all.at(key), text) << key;
    }
    if (FAILED(status) && left != before) {
      // Rows written before stay. Only the class that was being rewritten may lack its own.
      EXPECT_GE(left.size() + kRowsOfAClass, most_left);
      most_left = std::max(most_left, left.size());
    }
    ASSERT_EQ(module_.unregister_server(), S_OK);
  }
  EXPECT_GT(failures, 10);
  EXPECT_GT(most_left, 100u);
  EXPECT_EQ(AllRows(), all);
}

}  // namespace
}  // namespace mirolta::test
