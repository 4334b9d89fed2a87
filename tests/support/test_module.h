// The test program in the place of the module: its message texts and its state, without the class
// table.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "messages.h"
#include "mirolta.h"
#include "module_state.h"
#include "owned_value.h"
#include "portable/module_resources.h"

namespace mirolta::test {

using Text = std::basic_string<OLECHAR>;

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

// What the thread's error slot held, which it no longer does.
struct TakenError {
  bool published = false;
  bool has_source = false;
  Text source;
  Text description;
  GUID interface_id = GUID_NULL;
  Text help_file;
  DWORD help_context = 0;
};

inline Text TextOf(BSTR text) {
  return text == nullptr ? Text() : Text(text, SysStringLen(text));
}

inline TakenError TakeError() {
  TakenError taken;
  OwnedReference<IErrorInfo> info;
  taken.published = GetErrorInfo(0, info.Put()) == S_OK;
  if (!taken.published) return taken;
  OwnedBstr text;
  EXPECT_EQ(info->GetSource(text.Put()), S_OK);
  taken.has_source = text.Get() != nullptr;
  taken.source = TextOf(text.Get());
  EXPECT_EQ(info->GetDescription(text.Put()), S_OK);
  taken.description = TextOf(text.Get());
  EXPECT_EQ(info->GetHelpFile(text.Put()), S_OK);
  taken.help_file = TextOf(text.Get());
  EXPECT_EQ(info->GetHelpContext(&taken.help_context), S_OK);
  EXPECT_EQ(info->GetGUID(&taken.interface_id), S_OK);
  return taken;
}

}  // namespace mirolta::test
