// One change of the registry: as it is asked for, and as a batch makes it again on what others have
// written meanwhile.
#pragma once

#include "registry/registry_tree.h"

namespace mirolta::runtime {

struct RegistryChange {
  enum class Kind : uint8_t { kMakeKey, kDeleteKey, kSetValue, kDeleteValue };

  explicit RegistryChange(Kind wanted) : kind(wanted) {}

  const Kind kind;
  DWORD type = REG_NONE;
  RuntimeArray<WCHAR> path;  // of the key, from the outermost one
  RuntimeArray<WCHAR> value_name;
  RuntimeArray<BYTE> data;
  RegistryChange* next = nullptr;  // in a batch
};

// MakeChange changes the tree; *changed tells whether anything did.
// Errors: ERROR_KEY_DELETED if the key of a value is missing; ERROR_FILE_NOT_FOUND if what is to be
//         deleted is; ERROR_ACCESS_DENIED for a key with subkeys and for roots; MakePath's;
//         ERROR_OUTOFMEMORY. After a failure the tree is as it was.
LONG MakeChange(const RegistryChange& change, RegistryKey* root, bool* changed);

// RepeatChange makes a change that went well on an earlier state of the registry. What others have
// done since does not let it fail: a key that is gone is made for its value, what is to be deleted
// and is gone already is no failure, and a key into which others have put subkeys stays.
// Errors: ERROR_OUTOFMEMORY.
LONG RepeatChange(const RegistryChange& change, RegistryKey* root, bool* changed);

}  // namespace mirolta::runtime
