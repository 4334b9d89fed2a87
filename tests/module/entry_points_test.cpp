// Entry points over unusual rows of the class table. This program is the module.
#include "entry_points.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "class_table.h"
#include "mirolta.h"
#include "module_state.h"
#include "owned_value.h"

namespace mirolta {
namespace {

// Restores a row of the table at its end.
class EntryPointsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(CurrentModule(), nullptr);
    row_ = FindClass(CLSID_HashObject);
    ASSERT_NE(row_, nullptr);
    ASSERT_EQ(row_->factory, nullptr);
    kept_ = *row_;
  }
  void TearDown() override { *row_ = kept_; }

  static HRESULT GetFactory(OwnedReference<IClassFactory>* factory) {
    return DllGetClassObject(CLSID_HashObject, IID_IClassFactory,
                             reinterpret_cast<void**>(factory->Put()));
  }

  ClassRow* row_ = nullptr;
  ClassRow kept_ = {};
};

TEST_F(EntryPointsTest, ARowWithoutFactoryIsNoClass) {
  row_->create_factory = nullptr;
  EXPECT_EQ(FindClass(CLSID_HashObject), nullptr);
  OwnedReference<IClassFactory> factory;
  EXPECT_EQ(GetFactory(&factory), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(factory);
}

TEST_F(EntryPointsTest, AFactoryThatIsNotMadeIsNotAvailable) {
  row_->create_factory = [](InstanceCreator, REFIID, void** out) {
    *out = nullptr;
    return S_OK;
  };
  OwnedReference<IClassFactory> factory;
  EXPECT_EQ(GetFactory(&factory), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(factory);

  row_->create_factory = [](InstanceCreator, REFIID, void** out) -> HRESULT {
    *out = nullptr;
    return E_ABORT;
  };
  EXPECT_EQ(GetFactory(&factory), E_ABORT);
  EXPECT_FALSE(factory);
  EXPECT_EQ(row_->factory, nullptr);
}

TEST_F(EntryPointsTest, NoClassHasADescriptionOrCategoriesOfItsOwn) {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    EXPECT_EQ(row->object_description(), nullptr);
    EXPECT_EQ(row->category_map(), nullptr);
    EXPECT_EQ(row->cookie, 0u);
  }
}

// Every row's hook, in order: at the end after the row's factory is gone, at the start with the
// module's state in place.
TEST_F(EntryPointsTest, EveryRowHearsOfTheModulesStartAndEnd) {
  static std::string heard;
  std::vector<ClassRow> kept;
  for (ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    kept.push_back(*row);
    row->init_term = [](bool loads) {
      heard += loads ? "+" : "-";
      if (CurrentModule() == nullptr) heard += "without a module";
    };
  }
  ASSERT_EQ(kept.size(), 12u);
  const HINSTANCE instance = CurrentModule()->instance;
  DllMain(instance, DLL_PROCESS_DETACH, nullptr);
  EXPECT_EQ(heard, "------------");
  heard.clear();
  DllMain(instance, DLL_PROCESS_ATTACH, nullptr);
  EXPECT_EQ(heard, "++++++++++++");
  for (size_t i = 0; i < kept.size(); ++i) ClassTable()[i] = kept[i];
}

TEST_F(EntryPointsTest, TheTableHasItsOrder) {
  const struct {
    const CLSID* id;
    const OLECHAR* prog_id;
  } rows[] = {
      {&CLSID_ToviStreamDigest, OLESTR("Vardeko.crypt.ToviStreamDigest.1")},
      {&CLSID_HashObject, OLESTR("Vardeko.crypt.HashObject.1")},
      {&CLSID_SymmetricCryptObject, OLESTR("Vardeko.crypt.Symmetric.1")},
      {&CLSID_RSACrypt, OLESTR("Vardeko.crypt.RSA.1")},
      {&CLSID_PexBigNumber, OLESTR("Vardeko.crypt.Number.1")},
      {&CLSID_ToviStreamCrypt, OLESTR("Vardeko.crypt.ToviStreamCrypt.1")},
      {&CLSID_ToviStreamDigestFree, OLESTR("Vardeko.crypt.ToviStreamDigest.free.1")},
      {&CLSID_HashObjectFree, OLESTR("Vardeko.crypt.HashObject.free.1")},
      {&CLSID_SymmetricCryptObjectFree, OLESTR("Vardeko.crypt.Symmetric.free.1")},
      {&CLSID_RSACryptFree, OLESTR("Vardeko.crypt.RSA.free.1")},
      {&CLSID_PexBigNumberFree, OLESTR("Vardeko.crypt.Number.free.1")},
      {&CLSID_ToviStreamCryptFree, OLESTR("Vardeko.crypt.ToviStreamCrypt.free.1")},
  };
  const ClassRow* row = ClassTable();
  for (const auto& expected : rows) {
    ASSERT_NE(row->id, nullptr);
    EXPECT_EQ(*row->id, *expected.id);
    EXPECT_EQ(std::basic_string<OLECHAR>(row->prog_id), expected.prog_id);
    ++row;
  }
  EXPECT_EQ(row->id, nullptr);
}

TEST_F(EntryPointsTest, ThreadsThatComeAndGoChangeNothing) {
  ModuleState* const state = CurrentModule();
  const HINSTANCE instance = state->instance;
  const LONG count = state->lock_count;
  for (const DWORD reason : {2u, 3u}) {  // a thread begins, a thread ends
    EXPECT_TRUE(DllMain(nullptr, reason, nullptr));
    EXPECT_EQ(CurrentModule(), state);
    EXPECT_EQ(state->instance, instance);
    EXPECT_EQ(state->lock_count, count);
  }
}

TEST_F(EntryPointsTest, AfterTheModuleHasGoneEveryEntryPointSaysSo) {
  const HINSTANCE instance = CurrentModule()->instance;
  {
    OwnedReference<IClassFactory> factory;
    ASSERT_EQ(GetFactory(&factory), S_OK);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  }
  EXPECT_NE(row_->factory, nullptr);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_TRUE(DllMain(instance, DLL_PROCESS_DETACH, nullptr));
  EXPECT_EQ(row_->factory, nullptr);
  EXPECT_EQ(CurrentModule(), nullptr);
  OwnedReference<IClassFactory> factory;
  EXPECT_EQ(GetFactory(&factory), E_INVALIDARG);
  EXPECT_EQ(DllRegisterServer(), E_INVALIDARG);
  EXPECT_EQ(DllUnregisterServer(), E_INVALIDARG);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_TRUE(DllMain(instance, DLL_PROCESS_ATTACH, nullptr));
  EXPECT_EQ(GetFactory(&factory), S_OK);
  factory.Reset();
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  // The row is put back as it was: without a factory.
  row_->factory->Release();
}

}  // namespace
}  // namespace mirolta
