// Replaces the module that contains the filters: its texts.
#include <gtest/gtest.h>

#include <optional>

#include "test_module.h"

namespace mirolta::test {
namespace {

class StreamTestModule : public testing::Environment {
 public:
  void SetUp() override {
    module_.emplace();
    ASSERT_NE(module_->instance(), nullptr);
  }
  void TearDown() override {
    // Every filter of every test has ended.
    EXPECT_EQ(CurrentModule()->lock_count, 0);
    module_.reset();
  }

 private:
  std::optional<TestModule> module_;
};

testing::Environment* const environment = testing::AddGlobalTestEnvironment(new StreamTestModule);

}  // namespace
}  // namespace mirolta::test
