// The test program as the module: with its message texts and its state, without the class table.
#pragma once

#include "error_slot.h"
#include "messages.h"
#include "mirolta.h"
#include "module_state.h"
#include "portable/module_resources.h"

namespace mirolta::test {

// TestModule is attached and has its state while it lives. One at a time.
class TestModule {
 public:
  TestModule() {
    resources_ = {strings_, 0, nullptr, 0, nullptr};
    for (const Message& message : kMessages) {
      strings_[resources_.string_count++] = {message.id, message.text};
    }
    instance_ = MiroltaAttachModule(&resources_);
    InitModuleState(instance_, nullptr, LIBID_MIROLTALib);
  }
  ~TestModule() {
    TermModuleState();
    MiroltaDetachModule(instance_);
  }
  TestModule(const TestModule&) = delete;
  TestModule& operator=(const TestModule&) = delete;

  HINSTANCE instance() const { return instance_; }

 private:
  // Static: a module is found by the address of its resources.
  static inline StringResource strings_[sizeof(kMessages) / sizeof(kMessages[0])] = {};
  static inline ModuleResources resources_ = {};
  HINSTANCE instance_ = nullptr;
};

}  // namespace mirolta::test
