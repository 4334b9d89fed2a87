#include "registry_tree.h"

#include <locale.h>
#include <wctype.h>

namespace mirolta {
namespace {

// Letter case of all scripts, whatever locale the process runs in; else that of ASCII.
WCHAR Folded(WCHAR c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<WCHAR>(c - u'A' + u'a') : c;
  static const locale_t locale =
      newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return c;
  const wint_t folded = towlower_l(towupper_l(c, locale), locale);
  return folded <= 0xFFFF ? static_cast<WCHAR>(folded) : c;
}

}  // namespace

bool SameName(NameView a, NameView b) {
  if (a.size != b.size) return false;
  for (size_t i = 0; i < a.size; ++i) {
    if (a.text[i] != b.text[i] && Folded(a.text[i]) != Folded(b.text[i])) return false;
  }
  return true;
}

bool TakeName(NameView* path, NameView* name) {
  while (path->size != 0 && *path->text == u'\\') {
    ++path->text;
    --path->size;
  }
  *name = {path->text, 0};
  while (path->size != 0 && *path->text != u'\\') {
    ++path->text;
    --path->size;
    ++name->size;
  }
  return name->size != 0;
}

bool HasControls(NameView name) {
  for (size_t i = 0; i < name.size; ++i) {
    if (name.text[i] < 0x20) return true;
  }
  return false;
}

RegistryKey::~RegistryKey() {
  while (first_child_ != nullptr) RemoveChild(first_child_);
  while (first_value_ != nullptr) {
    RegistryValue* value = first_value_;
    first_value_ = value->next;
    DeleteRuntime(value);
  }
}

RegistryKey* RegistryKey::FindChild(NameView name) {
  RegistryKey* child = first_child_;
  while (child != nullptr && !SameName(child->name(), name)) child = child->next_;
  return child;
}

RegistryKey* RegistryKey::AddChild(NameView name) {
  RegistryKey* child = NewRuntime<RegistryKey>();
  if (child == nullptr) return nullptr;
  if (!child->name_.Append(name.text, name.size)) {
    DeleteRuntime(child);
    return nullptr;
  }
  child->parent_ = this;
  RegistryKey** link = &first_child_;
  while (*link != nullptr) link = &(*link)->next_;
  *link = child;
  return child;
}

void RegistryKey::RemoveChild(RegistryKey* child) {
  RegistryKey** link = &first_child_;
  while (*link != child) link = &(*link)->next_;
  *link = child->next_;
  DeleteRuntime(child);
}

const RegistryValue* RegistryKey::FindValue(NameView name) const {
  const RegistryValue* value = first_value_;
  while (value != nullptr &&
         (value->is_comment || !SameName({value->name.data(), value->name.size()}, name))) {
    value = value->next;
  }
  return value;
}

bool RegistryKey::SetValue(NameView name, DWORD type, const BYTE* data, size_t size) {
  RuntimeArray<BYTE> copy;
  if (!copy.Append(data, size)) return false;
  RegistryValue* value = const_cast<RegistryValue*>(FindValue(name));  // this key's own
  if (value == nullptr) {
    value = NewRuntime<RegistryValue>();
    if (value == nullptr) return false;
    if (!value->name.Append(name.text, name.size)) {
      DeleteRuntime(value);
      return false;
    }
    RegistryValue** link = &first_value_;
    while (name.size != 0 && *link != nullptr) link = &(*link)->next;
    value->next = *link;
    *link = value;
  }
  value->type = type;
  value->data.Swap(copy);
  return true;
}

bool RegistryKey::AddComment(const char* text, size_t size) {
  RegistryValue* comment = NewRuntime<RegistryValue>();
  if (comment == nullptr) return false;
  comment->is_comment = true;
  if (!comment->data.Resize(size)) {
    DeleteRuntime(comment);
    return false;
  }
  std::memcpy(comment->data.data(), text, size);
  RegistryValue** link = &first_value_;
  while (*link != nullptr) link = &(*link)->next;
  *link = comment;
  return true;
}

bool RegistryKey::RemoveValue(NameView name) {
  const RegistryValue* found = FindValue(name);
  if (found == nullptr) return false;
  RegistryValue** link = &first_value_;
  while (*link != found) link = &(*link)->next;
  RegistryValue* removed = *link;
  *link = removed->next;
  DeleteRuntime(removed);
  return true;
}

RegistryKey* RegistryKey::FindPath(NameView path) {
  RegistryKey* key = this;
  NameView name;
  while (key != nullptr && TakeName(&path, &name)) key = key->FindChild(name);
  return key;
}

LONG RegistryKey::MakePath(NameView path, RegistryKey** key, bool* made) {
  *key = this;
  *made = false;
  unsigned depth = 0;
  for (const RegistryKey* above = parent_; above != nullptr; above = above->parent_) ++depth;
  NameView name;
  for (NameView rest = path; TakeName(&rest, &name);) {
    if (name.size > kLongestKeyName || HasControls(name) || ++depth > kDeepestKey) {
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

}  // namespace mirolta
