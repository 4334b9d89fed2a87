// The thread's error slot, taken apart.
#pragma once

#include <gtest/gtest.h>

#include "module_statuses.h"
#include "owned_value.h"
#include "platform.h"
#include "text.h"

namespace mirolta::test {

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

// Expects that a member described its failure, and takes the description out of the slot.
inline void ExpectError(const Text& description, const Text& source) {
  const TakenError taken = TakeError();
  EXPECT_TRUE(taken.published);
  EXPECT_EQ(taken.description, description);
  EXPECT_EQ(taken.source, source);
  EXPECT_TRUE(taken.interface_id == GUID_NULL);
}
inline void ExpectError(const Text& description) {
  const TakenError taken = TakeError();
  EXPECT_TRUE(taken.published);
  EXPECT_EQ(taken.description, description);
  EXPECT_TRUE(taken.interface_id == GUID_NULL);
}
inline void ExpectNoError() {
  EXPECT_FALSE(TakeError().published);
}

}  // namespace mirolta::test
