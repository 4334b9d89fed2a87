// Replaces the module that contains the filters: its texts.
#include <gtest/gtest.h>

#include "messages.h"
#include "mirolta.h"
#include "module_state.h"
#include "portable/module_resources.h"

namespace mirolta {
namespace {

constexpr unsigned kMessageCount = sizeof(kMessages) / sizeof(kMessages[0]);

// The module's file is found from their address.
StringResource strings[kMessageCount];
constexpr ModuleResources kResources = {strings, kMessageCount, nullptr, 0, nullptr};

class StreamTestModule : public testing::Environment {
 public:
  void SetUp() override {
    for (unsigned i = 0; i < kMessageCount; ++i) {
      strings[i] = {kMessages[i].id, kMessages[i].text};
    }
    module_ = MiroltaAttachModule(&kResources);
    ASSERT_NE(module_, nullptr);
    InitModuleState(module_, nullptr, LIBID_MIROLTALib);
  }
  void TearDown() override {
    // Every filter of every test has ended.
    EXPECT_EQ(CurrentModule()->lock_count, 0);
    TermModuleState();
    MiroltaDetachModule(module_);
  }

 private:
  HINSTANCE module_ = nullptr;
};

testing::Environment* const environment = testing::AddGlobalTestEnvironment(new StreamTestModule);

}  // namespace
}  // namespace mirolta
