#include "registry/registry_change.h"

namespace mirolta::runtime {
namespace {

LONG MakeKey(const RegistryChange& change, RegistryKey* root, bool* changed) {
  RegistryKey* key = nullptr;
  return root->MakePath(ViewOf(change.path), &key, changed);
}

LONG DeleteKey(const RegistryChange& change, RegistryKey* root, bool* changed) {
  RegistryKey* key = root->FindPath(ViewOf(change.path));
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
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

}  // namespace

LONG MakeChange(const RegistryChange& change, RegistryKey* root, bool* changed) {
  *changed = false;
  if (change.kind == RegistryChange::Kind::kMakeKey) return MakeKey(change, root, changed);
  if (change.kind == RegistryChange::Kind::kDeleteKey) return DeleteKey(change, root, changed);
  RegistryKey* key = root->FindPath(ViewOf(change.path));
  if (key == nullptr) return ERROR_KEY_DELETED;
  if (change.kind == RegistryChange::Kind::kSetValue) return SetValue(change, key, changed);
  *changed = key->RemoveValue(ViewOf(change.value_name));
  return *changed ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LONG RepeatChange(const RegistryChange& change, RegistryKey* root, bool* changed) {
  bool made = false;
  LONG error = ERROR_SUCCESS;
  if (change.kind == RegistryChange::Kind::kSetValue) error = MakeKey(change, root, &made);
  if (error == ERROR_SUCCESS) error = MakeChange(change, root, changed);
  *changed = *changed || made;
  return error == ERROR_OUTOFMEMORY ? error : ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
