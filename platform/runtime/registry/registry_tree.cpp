#include "registry/registry_tree.h"

namespace mirolta::runtime {
RegistryKey::~RegistryKey() {
  while (!children_.IsEmpty()) RemoveChild(children_.First());
  while (RegistryValue* value = values_.First()) {
    values_.Remove(value);
    DeleteRuntime(value);
  }
}

RegistryKey* RegistryKey::AddChild(WideView name) {
  RuntimeOwner<RegistryKey> child(NewRuntime<RegistryKey>());
  if (child == nullptr || !child->name_.Append(name.data(), name.size()) ||
      !children_.Append(child.get())) {
    return nullptr;
  }
  child->parent_ = this;
  return child.release();
}

void RegistryKey::RemoveChild(RegistryKey* child) {
  children_.Remove(child);
  DeleteRuntime(child);
}

bool RegistryKey::AddValue(RuntimeOwner<RegistryValue> value, bool first) {
  RegistryValue* const added = value.release();
  if (first ? values_.Prepend(added) : values_.Append(added)) return true;
  DeleteRuntime(added);
  return false;
}

bool RegistryKey::SetValue(WideView name, DWORD type, const BYTE* data, size_t size) {
  RuntimeArray<BYTE> copy;
  if (!copy.Append(data, size)) return false;
  RegistryValue* value = values_.Find(name);
  if (value == nullptr) {
    RuntimeOwner<RegistryValue> added(NewRuntime<RegistryValue>());
    if (added == nullptr || !added->name_text.Append(name.data(), name.size())) return false;
    value = added.get();
    if (!AddValue(std::move(added), name.empty())) return false;
  }
  value->type = type;
  value->data.Swap(copy);
  return true;
}

bool RegistryKey::AddComment(const char* text, size_t size) {
  RuntimeOwner<RegistryValue> comment(NewRuntime<RegistryValue>());
  if (comment == nullptr || !comment->data.Resize(size)) return false;
  comment->is_comment = true;
  std::memcpy(comment->data.Data(), text, size);
  return AddValue(std::move(comment), false);
}

bool RegistryKey::RemoveValue(WideView name) {
  RegistryValue* value = values_.Find(name);
  if (value == nullptr) return false;
  values_.Remove(value);
  DeleteRuntime(value);
  return true;
}

bool RegistryKey::CopyTo(RegistryKey* copy) const {
  for (const RegistryValue* value = FirstValue(); value != nullptr; value = value->Next()) {
    RuntimeOwner<RegistryValue> added(NewRuntime<RegistryValue>());
    if (added == nullptr) return false;
    added->is_comment = value->is_comment;
    added->type = value->type;
    if (!added->name_text.Append(value->name_text.Data(), value->name_text.Size()) ||
        !added->data.Append(value->data.Data(), value->data.Size())) {
      return false;
    }
    if (!copy->AddValue(std::move(added), false)) return false;
  }
  for (const RegistryKey* child = FirstChild(); child != nullptr; child = child->Next()) {
    RegistryKey* added = copy->AddChild(child->Name());
    if (added == nullptr || !child->CopyTo(added)) return false;
  }
  return true;
}

bool RegistryKey::CopyValuesTo(RegistryKey* other) const {
  for (const RegistryValue* value = FirstValue(); value != nullptr; value = value->Next()) {
    if (!value->is_comment &&
        !other->SetValue(value->Name(), value->type, value->data.Data(), value->data.Size())) {
      return false;
    }
  }
  return true;
}

RegistryKey* RegistryKey::FindPath(WideView path) {
  RegistryKey* key = this;
  WideView name;
  while (key != nullptr && TakeName(&path, &name)) key = key->FindChild(name);
  return key;
}

LONG RegistryKey::MakePath(WideView path, RegistryKey** key, bool* made) {
  *key = this;
  *made = false;
  unsigned depth = 0;
  for (const RegistryKey* above = parent_; above != nullptr; above = above->parent_) ++depth;
  WideView name;
  for (WideView rest = path; TakeName(&rest, &name);) {
    if (name.size() > kLongestKeyName || HasControls(name) || ++depth > kDeepestKey) {
      return ERROR_INVALID_PARAMETER;
    }
  }
  RegistryKey* first_made = nullptr;
  while (TakeName(&path, &name)) {
    RegistryKey* child = (*key)->FindChild(name);
    *made = child == nullptr;
    if (*made) {
      child = (*key)->AddChild(name);
      if (first_made == nullptr) first_made = child;
    }
    if (child == nullptr) {
      if (first_made != nullptr) first_made->parent_->RemoveChild(first_made);
      return ERROR_OUTOFMEMORY;
    }
    *key = child;
  }
  return ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
