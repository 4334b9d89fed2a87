#include "registry/registry_change.h"

namespace mirolta::runtime {
namespace {

RegistryKey* FindIn(RegistryKey* root, const RegistryChange& change) {
  return root == nullptr ? nullptr : root->FindPath(ViewOf(change.path));
}

LONG MakeKey(const RegistryChange& change, RegistryKey* root, const RegistryKey* lower,
             bool* changed) {
  if (lower != nullptr) return ERROR_SUCCESS;
  RegistryKey* key = nullptr;
  return root->MakePath(ViewOf(change.path), &key, changed);
}

LONG DeleteKey(RegistryKey* key, const RegistryKey* lower, bool* changed) {
  if (key == nullptr) return lower != nullptr ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
  RegistryKey* above = key->Parent();
  const bool is_root = above == nullptr || above->Parent() == nullptr;
  if (is_root || key->FirstChild() != nullptr) return ERROR_ACCESS_DENIED;
  above->RemoveChild(key);
  *changed = true;
  return ERROR_SUCCESS;
}

LONG SetValue(const RegistryChange& change, RegistryKey* key, bool* changed) {
  const RegistryValue* old = key->FindValue(ViewOf(change.value_name));
  const RuntimeArray<BYTE>& data = change.data;
  const bool same =
      old != nullptr && old->type == change.type && old->data.Size() == data.Size() &&
      (data.IsEmpty() || std::memcmp(old->data.Data(), data.Data(), data.Size()) == 0);
  if (same) return ERROR_SUCCESS;
  *changed = true;
  return key->SetValue(ViewOf(change.value_name), change.type, data.Data(), data.Size())
             ? ERROR_SUCCESS
             : ERROR_OUTOFMEMORY;
}

// Sets a value of a key that shows those of `lower` so far.
LONG SetLowerValue(const RegistryChange& change, RegistryKey* root, const RegistryKey& lower,
                   bool* changed) {
  RegistryKey* key = nullptr;
  bool made;
  const LONG error = root->MakePath(ViewOf(change.path), &key, &made);
  if (error != ERROR_SUCCESS) return error;
  if (lower.CopyValuesTo(key) && SetValue(change, key, changed) == ERROR_SUCCESS) {
    return ERROR_SUCCESS;
  }
  while (const RegistryValue* copied = key->ValueAt(0)) key->RemoveValue(copied->Name());
  return ERROR_OUTOFMEMORY;
}

LONG DeleteValue(const RegistryChange& change, RegistryKey* key, const RegistryKey* lower,
                 bool* changed) {
  if (key != nullptr) *changed = key->RemoveValue(ViewOf(change.value_name));
  if (*changed) return ERROR_SUCCESS;
  return lower != nullptr && lower->FindValue(ViewOf(change.value_name)) != nullptr
             ? ERROR_ACCESS_DENIED
             : ERROR_FILE_NOT_FOUND;
}

}  // namespace

LONG MakeChange(const RegistryChange& change, RegistryKey* root, RegistryKey* lower,
                bool* changed) {
  *changed = false;
  RegistryKey* const key = FindIn(root, change);
  const RegistryKey* const below = FindIn(lower, change);
  if (change.kind == RegistryChange::Kind::kMakeKey) return MakeKey(change, root, below, changed);
  if (change.kind == RegistryChange::Kind::kDeleteKey) return DeleteKey(key, below, changed);
  if (key == nullptr && below == nullptr) return ERROR_KEY_DELETED;
  // Only one file's values are visible.
  const bool shows_lower = below != nullptr && (key == nullptr || !key->HasValues());
  if (change.kind == RegistryChange::Kind::kDeleteValue) {
    return DeleteValue(change, key, shows_lower ? below : nullptr, changed);
  }
  return shows_lower ? SetLowerValue(change, root, *below, changed)
                     : SetValue(change, key, changed);
}

LONG RepeatChange(const RegistryChange& change, RegistryKey* root, bool* changed) {
  bool made = false;
  LONG error = ERROR_SUCCESS;
  if (change.kind == RegistryChange::Kind::kSetValue) {
    error = MakeKey(change, root, nullptr, &made);
  }
  if (error == ERROR_SUCCESS) error = MakeChange(change, root, nullptr, changed);
  *changed = *changed || made;
  return error == ERROR_OUTOFMEMORY ? error : ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
