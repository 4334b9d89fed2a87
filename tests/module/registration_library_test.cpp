// The search for the type library, with the test program as the module: it has no library of its
// own.
#include <filesystem>

#include "class_table.h"
#include "mirolta.h"
#include "module_state.h"
#include "owned_value.h"
#include "portable/module_resources.h"
#include "registration_fixture.h"
#include "type_library_registration.h"

namespace mirolta::test {
namespace {

constexpr ModuleResources kNothing = {};

class RegistrationLibraryTest : public RegistrationTest {
 protected:
  void SetUp() override {
    RegistrationTest::SetUp();
    instance_ = MiroltaAttachModule(&kNothing);
    ASSERT_NE(instance_, nullptr);
    InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
    OLECHAR file[MAX_PATH + 1] = {};
    ASSERT_TRUE(ModuleFileName(file));
    own_ = Narrow(file);
    const size_t dot = own_.rfind('.');
    // The extension is searched for in the whole name; that of a folder would be taken for it.
    if (dot != std::string::npos && dot < own_.rfind('/')) {
      GTEST_SKIP() << "a folder of " << own_ << " has a dot";
    }
    beside_ = own_.substr(0, dot) + ".tlb";
    std::filesystem::remove(beside_);
  }
  void TearDown() override {
    std::filesystem::remove(beside_);
    TermModuleState();
    MiroltaDetachModule(instance_);
    RegistrationTest::TearDown();
  }

  std::string own_;
  std::string beside_;
  HINSTANCE instance_ = nullptr;
};

TEST_F(RegistrationLibraryTest, WithoutAnyTheLoadersStatusIsGiven) {
  OwnedReference<ITypeLib> library;
  OLECHAR file[MAX_PATH + 5] = {};
  EXPECT_EQ(FindModuleTypeLibrary(library.Put(), file), TYPE_E_CANTLOADLIBRARY);
  EXPECT_FALSE(library);
  EXPECT_EQ(Narrow(file), beside_);
  EXPECT_EQ(RegisterModuleTypeLibrary(), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(UnregisterModuleTypeLibrary(), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(RegistrationLibraryTest, TheFileBesideTheModuleIsTaken) {
  std::filesystem::copy_file(MIROLTA_MODULE, beside_);
  OwnedReference<ITypeLib> library;
  OLECHAR file[MAX_PATH + 5] = {};
  ASSERT_EQ(FindModuleTypeLibrary(library.Put(), file), S_OK);
  EXPECT_EQ(Narrow(file), beside_);
  library.Reset();

  ASSERT_EQ(RegisterModuleTypeLibrary(), S_OK);
  const std::string key = "TypeLib\\{D0503D72-C0D7-4CDA-BD03-8D7496F936DA}\\1.0";
  const std::string platform = sizeof(void*) == 8 ? "linux64" : "linux32";
  Rows rows = AllRows();
  EXPECT_EQ(rows.at(key + "\\0\\" + platform + "|@"), beside_);
  EXPECT_EQ(rows.at(key + "\\HELPDIR|@"), beside_.substr(0, beside_.rfind('/') + 1));
  ASSERT_EQ(UnregisterModuleTypeLibrary(), S_OK);
  EXPECT_EQ(AllRows().count(key), 0u);
}

TEST_F(RegistrationLibraryTest, AFileThatIsNoLibraryIsRefused) {
  std::filesystem::copy_file(own_, beside_);
  EXPECT_EQ(RegisterModuleTypeLibrary(), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(RegistrationLibraryTest, AMissingScriptIsAFailureOfItsRow) {
  // The test program has no registry scripts.
  const ClassRow* const row = ClassTable();
  EXPECT_EQ(row->update_registry(*row, true), static_cast<HRESULT>(0x80070715u));
  EXPECT_EQ(row->update_registry(*row, false), static_cast<HRESULT>(0x80070715u));
  EXPECT_EQ(AllRows(), Rows());
}

}  // namespace
}  // namespace mirolta::test
