// What every test of trust stands on: a registry in memory, and no file of the user's.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include "mirolta.h"
#include "platform.h"
#include "portable/registry_mode.h"

namespace mirolta::test {

inline void UseRegistryInMemory() {
  ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
}

class TrustTest : public testing::Test {
 protected:
  void SetUp() override { UseRegistryInMemory(); }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    MiroltaRegistryInMemory(FALSE);
  }
};

}  // namespace mirolta::test
