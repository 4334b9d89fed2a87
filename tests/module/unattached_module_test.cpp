// A module that the runtime could not give a handle when it was loaded. This program is the module.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "entry_points.h"
#include "mirolta.h"
#include "module_state.h"
#include "portable/module_resources.h"

namespace {
int attached = 0;
int detached = 0;
}  // namespace

namespace mirolta {
extern "C" HINSTANCE MiroltaAttachModule(const ModuleResources* resources) {
  EXPECT_NE(resources, nullptr);
  ++attached;
  return nullptr;
}

// Called, if at all, after the tests: what was never attached is not detached.
extern "C" void MiroltaDetachModule(HINSTANCE module) {
  ++detached;
  if (module != nullptr) return;
  std::fputs("a module without a handle was detached\n", stderr);
  std::_Exit(1);
}

namespace {

TEST(UnattachedModuleTest, EveryEntryPointSaysSo) {
  EXPECT_EQ(attached, 1);
  EXPECT_EQ(CurrentModule(), nullptr);
  void* factory = &attached;
  EXPECT_EQ(DllGetClassObject(CLSID_HashObject, IID_IClassFactory, &factory), E_INVALIDARG);
  EXPECT_EQ(DllGetClassObject(CLSID_HashObject, IID_IClassFactory, nullptr), E_INVALIDARG);
  EXPECT_EQ(DllRegisterServer(), E_INVALIDARG);
  EXPECT_EQ(DllUnregisterServer(), E_INVALIDARG);
  // Nothing holds a module that was never attached.
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_EQ(detached, 0);
}

}  // namespace
}  // namespace mirolta
