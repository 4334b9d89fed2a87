// Entry points over rows of the class table that are not as usual. This program is the module.
#include "entry_points.h"

#include <gtest/gtest.h>

#include "class_table.h"
#include "mirolta.h"
#include "module_state.h"
#include "owned_value.h"

namespace mirolta {
namespace {

// A row of the table that is put back afterwards.
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
