// One change of the registry: applied when it is requested, or repeated at the end of a batch on
// what others have written meanwhile.
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

// MakeChange applies a change to the tree; *changed tells whether it had an effect. `lower` has what
// is visible below the tree and stays; it may be null. A key that only `lower` has exists already,
// and gets its values from there before the first one is set.
// Errors: ERROR_KEY_DELETED if the key of a value is missing; ERROR_FILE_NOT_FOUND if what is to be
//         deleted is missing; ERROR_ACCESS_DENIED for deleting what only `lower` has, a key with
//         subkeys in the tree or a root; MakePath's; ERROR_OUTOFMEMORY. What is visible is then
//         unchanged.
LONG MakeChange(const RegistryChange& change, RegistryKey* root, RegistryKey* lower, bool* changed);

// RepeatChange applies a change that succeeded on an earlier state of the registry. Changes by
// others do not make it fail: a missing key is created for its value, deleting what is gone
// succeeds, and a key in which others have created subkeys stays.
// Errors: ERROR_OUTOFMEMORY.
LONG RepeatChange(const RegistryChange& change, RegistryKey* root, bool* changed);

}  // namespace mirolta::runtime
