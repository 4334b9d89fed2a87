#include <algorithm>

#include "portable/registry_mode.h"
#include "registry/registry_store.h"
#include "registry/registry_text.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

struct RootName {
  uint32_t number;
  const WCHAR* name;
};
constexpr RootName kRoots[] = {
    {0x80000000u, u"HKEY_CLASSES_ROOT"},
    {0x80000001u, u"HKEY_CURRENT_USER"},
    {0x80000002u, u"HKEY_LOCAL_MACHINE"},
};

// An open key is stored as its path from the root, so that it survives a reload of the tree.
struct OpenKey {
  OpenKey* next = nullptr;
  REGSAM access = 0;
  RuntimeArray<WCHAR> path;
};

OpenKey* g_open_keys = nullptr;  // accessed during a RegistryUse only

// A null name or path is an empty one.
WideView ViewOrEmpty(LPCWSTR text) {
  return text == nullptr ? WideView() : WideView(text);
}

// The root or the open key that a handle refers to.
struct Place {
  const WCHAR* root = nullptr;  // a root's name
  const OpenKey* open = nullptr;

  WideView Path() const { return open != nullptr ? ViewOf(open->path) : ViewOrEmpty(root); }
  bool Allows(REGSAM access) const {
    return open == nullptr || (open->access & (access | MAXIMUM_ALLOWED)) != 0;
  }
};

LONG PlaceOf(HKEY handle, Place* place) {
  for (const RootName& row : kRoots) {
    if (handle == MiroltaRootKey(row.number)) {
      place->root = row.name;
      return ERROR_SUCCESS;
    }
  }
  const OpenKey* open = g_open_keys;
  while (open != nullptr && reinterpret_cast<HKEY>(const_cast<OpenKey*>(open)) != handle) {
    open = open->next;
  }
  place->open = open;
  return open == nullptr ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
}

// The registry while it is used by way of a handle, and the handle's key. A root that the file
// lacks is created, in memory only. Lower layers are read only where the written one has no answer.
struct KeyUse {
  KeyUse(RegistryAccess registry_access, HKEY handle, REGSAM access) : registry(registry_access) {
    error = Find(handle, access);
  }

  RegistryUse registry;
  LONG error;
  Place place;
  RegistryKey* key = nullptr;  // in the layer that is written; null if only a lower one has it

  // Sets *lower to the key with the path `below` under the handle's in the lower layers, or null.
  LONG FindLower(WideView below, RegistryKey** lower) const {
    RegistryKey* root = nullptr;
    const LONG lower_error = registry.Lower(&root);
    *lower = root == nullptr ? nullptr : root->FindPath(place.Path());
    if (*lower != nullptr) *lower = (*lower)->FindPath(below);
    return lower_error;
  }

  LONG Exists(WideView below, bool* exists) const {
    *exists = key != nullptr && key->FindPath(below) != nullptr;
    if (*exists) return ERROR_SUCCESS;
    RegistryKey* lower = nullptr;
    const LONG lower_error = FindLower(below, &lower);
    *exists = lower != nullptr;
    return lower_error;
  }

  // Sets *shown to the key whose values are visible.
  LONG FindValues(const RegistryKey** shown) const {
    *shown = key;
    if (key != nullptr && key->HasValues()) return ERROR_SUCCESS;
    RegistryKey* lower = nullptr;
    const LONG lower_error = FindLower(WideView(), &lower);
    if (lower != nullptr && (key == nullptr || lower->HasValues())) *shown = lower;
    if (lower_error == ERROR_SUCCESS && *shown == nullptr) return ERROR_KEY_DELETED;
    return lower_error;
  }

  // Sets *child to the subkey with this index, or null. Those that only lower layers have follow
  // the others.
  LONG ChildAt(DWORD index, const RegistryKey** child) const {
    *child = key == nullptr ? nullptr : key->ChildAt(index);
    if (*child != nullptr) return ERROR_SUCCESS;
    RegistryKey* lower = nullptr;
    const LONG lower_error = FindLower(WideView(), &lower);
    if (lower == nullptr) return lower_error;
    const size_t own = key == nullptr ? 0 : key->ChildCount();
    if (own == 0) {
      *child = lower->ChildAt(index);
      return ERROR_SUCCESS;
    }
    size_t skipped = own;
    for (*child = lower->FirstChild(); *child != nullptr; *child = (*child)->Next()) {
      if (key->FindChild((*child)->Name()) == nullptr && skipped++ == index) break;
    }
    return ERROR_SUCCESS;
  }

 private:
  LONG Find(HKEY handle, REGSAM access) {
    if (registry.Error() != ERROR_SUCCESS) return registry.Error();
    const LONG unknown = PlaceOf(handle, &place);
    if (unknown != ERROR_SUCCESS) return unknown;
    if (!place.Allows(access)) return ERROR_ACCESS_DENIED;
    if (place.root != nullptr) {
      bool made;
      return registry.Root()->MakePath(place.Path(), &key, &made);
    }
    key = registry.Root()->FindPath(place.Path());
    if (key != nullptr) return ERROR_SUCCESS;
    RegistryKey* lower = nullptr;
    const LONG lower_error = FindLower(WideView(), &lower);
    return lower_error == ERROR_SUCCESS && lower == nullptr ? ERROR_KEY_DELETED : lower_error;
  }
};

// Joins the place of a handle and a path below it.
LONG JoinPath(const Place& from, WideView below, RuntimeArray<WCHAR>* path) {
  const WideView base = from.Path();
  return path->Append(base.data(), base.size()) && path->Append(u'\\') &&
                 path->Append(below.data(), below.size())
             ? ERROR_SUCCESS
             : ERROR_OUTOFMEMORY;
}

// An open key that is not in the table yet.
struct NewOpenKey {
  NewOpenKey() = default;
  NewOpenKey(const NewOpenKey&) = delete;
  NewOpenKey& operator=(const NewOpenKey&) = delete;
  ~NewOpenKey() { DeleteRuntime(key); }

  LONG Make(const Place& from, WideView below, REGSAM access) {
    key = NewRuntime<OpenKey>();
    if (key == nullptr) return ERROR_OUTOFMEMORY;
    key->access = access;
    return JoinPath(from, below, &key->path);
  }
  HKEY PutInTable() {
    OpenKey* const made = key;
    key = nullptr;
    made->next = g_open_keys;
    g_open_keys = made;
    return reinterpret_cast<HKEY>(made);
  }

  OpenKey* key = nullptr;
};

// Owns a change until RegistryUse::Make takes it.
struct NewChange {
  explicit NewChange(RegistryChange::Kind kind) : change(NewRuntime<RegistryChange>(kind)) {}
  NewChange(const NewChange&) = delete;
  NewChange& operator=(const NewChange&) = delete;
  ~NewChange() { DeleteRuntime(change); }

  // Applies the change to the key with the path `below` under a handle's.
  LONG Make(KeyUse* use, WideView below, bool* changed) {
    const LONG error = JoinPath(use->place, below, &change->path);
    return error == ERROR_SUCCESS ? use->registry.Make(&change, changed) : error;
  }

  RegistryChange* change;
};

// Text is stored as whole characters with a terminator, even if the caller omits it.
LONG TextAsKept(const BYTE* data, DWORD size, RuntimeArray<WCHAR>* text) {
  if (!text->Resize(size / sizeof(WCHAR))) return ERROR_OUTOFMEMORY;
  if (!text->IsEmpty()) std::memcpy(text->Data(), data, text->Size() * sizeof(WCHAR));
  if ((text->IsEmpty() || (*text)[text->Size() - 1] != 0) && !text->Append(u'\0')) {
    return ERROR_OUTOFMEMORY;
  }
  return SurvivesFile(ViewOf(*text)) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

// Returns a value's type and data, for querying and enumerating.
LONG GiveData(const RegistryValue& value, DWORD* type, BYTE* data, DWORD* size) {
  if (type != nullptr) *type = value.type;
  if (size == nullptr) return ERROR_SUCCESS;
  const DWORD needed = static_cast<DWORD>(value.data.Size());
  const bool fits = needed <= *size;
  if (data != nullptr && fits && needed != 0) std::memcpy(data, value.data.Data(), needed);
  *size = needed;
  return data == nullptr || fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

// Returns a name. *length is the capacity with the terminator, then the length without it.
LONG GiveName(WideView name, LPWSTR text, DWORD* length) {
  if (name.size() >= *length) return ERROR_MORE_DATA;
  if (!name.empty()) std::memcpy(text, name.data(), name.size() * sizeof(WCHAR));
  text[name.size()] = 0;
  *length = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" LONG RegOpenKeyExW(HKEY handle, LPCWSTR path, DWORD, REGSAM access, HKEY* out) {
  if (out == nullptr) return ERROR_INVALID_PARAMETER;
  *out = nullptr;
  const KeyUse use(RegistryAccess::kRead, handle, ~REGSAM{0});
  if (use.error != ERROR_SUCCESS) return use.error;
  bool exists = false;
  const LONG unread = use.Exists(ViewOrEmpty(path), &exists);
  if (unread != ERROR_SUCCESS) return unread;
  if (!exists) return ERROR_FILE_NOT_FOUND;
  NewOpenKey opened;
  const LONG made = opened.Make(use.place, ViewOrEmpty(path), access);
  if (made == ERROR_SUCCESS) *out = opened.PutInTable();
  return made;
}

extern "C" LONG RegCreateKeyExW(HKEY handle, LPCWSTR path, DWORD, LPWSTR, DWORD, REGSAM access,
                                void*, HKEY* out, DWORD* disposition) {
  if (out == nullptr) return ERROR_INVALID_PARAMETER;
  *out = nullptr;
  KeyUse use(RegistryAccess::kWrite, handle, ~REGSAM{0});
  if (use.error != ERROR_SUCCESS) return use.error;
  const WideView below = ViewOrEmpty(path);
  bool exists = false;
  LONG error = use.Exists(below, &exists);
  if (error != ERROR_SUCCESS) return error;
  if (!exists) {
    if (!use.place.Allows(KEY_CREATE_SUB_KEY)) return ERROR_ACCESS_DENIED;
    if (!SurvivesFile(below)) return ERROR_INVALID_PARAMETER;
  }
  NewOpenKey opened;
  NewChange change(RegistryChange::Kind::kMakeKey);
  if (change.change == nullptr) return ERROR_OUTOFMEMORY;
  error = opened.Make(use.place, below, access);
  bool made = false;
  if (error == ERROR_SUCCESS) error = change.Make(&use, below, &made);
  if (error != ERROR_SUCCESS) return error;
  *out = opened.PutInTable();
  if (disposition != nullptr) {
    *disposition = made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  }
  return ERROR_SUCCESS;
}

extern "C" LONG RegCloseKey(HKEY handle) {
  const RegistryUse use(RegistryAccess::kHandles);
  Place place;
  const LONG error = PlaceOf(handle, &place);
  if (error != ERROR_SUCCESS || place.root != nullptr) return error;
  OpenKey** link = &g_open_keys;
  while (*link != place.open) link = &(*link)->next;
  OpenKey* closed = *link;
  *link = closed->next;
  DeleteRuntime(closed);
  return ERROR_SUCCESS;
}

extern "C" LONG RegDeleteKeyW(HKEY handle, LPCWSTR path) {
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  KeyUse use(RegistryAccess::kWrite, handle, ~REGSAM{0});
  if (use.error != ERROR_SUCCESS) return use.error;
  NewChange change(RegistryChange::Kind::kDeleteKey);
  if (change.change == nullptr) return ERROR_OUTOFMEMORY;
  bool changed = false;
  return change.Make(&use, ViewOrEmpty(path), &changed);
}

extern "C" LONG RegDeleteValueW(HKEY handle, LPCWSTR name) {
  KeyUse use(RegistryAccess::kWrite, handle, KEY_SET_VALUE);
  if (use.error != ERROR_SUCCESS) return use.error;
  NewChange change(RegistryChange::Kind::kDeleteValue);
  const WideView value = ViewOrEmpty(name);
  if (change.change == nullptr || !change.change->value_name.Append(value.data(), value.size())) {
    return ERROR_OUTOFMEMORY;
  }
  bool changed = false;
  return change.Make(&use, WideView(), &changed);
}

extern "C" LONG RegSetValueExW(HKEY handle, LPCWSTR value_name, DWORD, DWORD type, const BYTE* data,
                               DWORD size) {
  const WideView name = ViewOrEmpty(value_name);
  if (data == nullptr && size != 0) return ERROR_INVALID_PARAMETER;
  if (name.size() > kLongestValueName || HasControls(name) || !SurvivesFile(name)) {
    return ERROR_INVALID_PARAMETER;
  }
  NewChange change(RegistryChange::Kind::kSetValue);
  if (change.change == nullptr) return ERROR_OUTOFMEMORY;
  RuntimeArray<WCHAR> text;
  size_t kept_size = size;
  if (IsTextType(type)) {
    const LONG error = TextAsKept(data, size, &text);
    if (error != ERROR_SUCCESS) return error;
    data = reinterpret_cast<const BYTE*>(text.Data());
    kept_size = text.Size() * sizeof(WCHAR);
  }
  change.change->type = type;
  if (!change.change->value_name.Append(name.data(), name.size()) ||
      !change.change->data.Append(data, kept_size)) {
    return ERROR_OUTOFMEMORY;
  }
  KeyUse use(RegistryAccess::kWrite, handle, KEY_SET_VALUE);
  if (use.error != ERROR_SUCCESS) return use.error;
  bool changed = false;
  return change.Make(&use, WideView(), &changed);
}

extern "C" LONG RegQueryValueExW(HKEY handle, LPCWSTR name, DWORD*, DWORD* type, BYTE* data,
                                 DWORD* size) {
  if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
  const KeyUse use(RegistryAccess::kRead, handle, KEY_QUERY_VALUE);
  if (use.error != ERROR_SUCCESS) return use.error;
  const RegistryKey* shown = nullptr;
  const LONG error = use.FindValues(&shown);
  if (error != ERROR_SUCCESS) return error;
  const RegistryValue* value = shown->FindValue(ViewOrEmpty(name));
  return value == nullptr ? ERROR_FILE_NOT_FOUND : GiveData(*value, type, data, size);
}

extern "C" LONG RegEnumKeyExW(HKEY handle, DWORD index, LPWSTR name, DWORD* length, DWORD*,
                              LPWSTR key_class, DWORD* class_length, FILETIME* written) {
  if (name == nullptr || length == nullptr) return ERROR_INVALID_PARAMETER;
  const KeyUse use(RegistryAccess::kRead, handle, KEY_ENUMERATE_SUB_KEYS);
  if (use.error != ERROR_SUCCESS) return use.error;
  const RegistryKey* child = nullptr;
  const LONG error = use.ChildAt(index, &child);
  if (error != ERROR_SUCCESS) return error;
  if (child == nullptr) return ERROR_NO_MORE_ITEMS;
  // Keys have no classes and no times here.
  if (key_class != nullptr && class_length != nullptr && *class_length != 0) key_class[0] = 0;
  if (class_length != nullptr) *class_length = 0;
  if (written != nullptr) *written = {};
  return GiveName(child->Name(), name, length);
}

extern "C" LONG RegEnumValueW(HKEY handle, DWORD index, LPWSTR name, DWORD* length, DWORD*,
                              DWORD* type, BYTE* data, DWORD* size) {
  if (name == nullptr || length == nullptr || (data != nullptr && size == nullptr)) {
    return ERROR_INVALID_PARAMETER;
  }
  const KeyUse use(RegistryAccess::kRead, handle, KEY_QUERY_VALUE);
  if (use.error != ERROR_SUCCESS) return use.error;
  const RegistryKey* shown = nullptr;
  LONG error = use.FindValues(&shown);
  if (error != ERROR_SUCCESS) return error;
  const RegistryValue* value = shown->ValueAt(index);
  if (value == nullptr) return ERROR_NO_MORE_ITEMS;
  const DWORD room = *length;
  error = GiveName(value->Name(), name, length);
  if (error != ERROR_SUCCESS) return error;
  error = GiveData(*value, type, data, size);
  if (error != ERROR_SUCCESS) *length = room;
  return error;
}

extern "C" LONG MiroltaRegistryLayer(HKEY handle, DWORD* layer) {
  if (layer == nullptr) return ERROR_INVALID_PARAMETER;
  *layer = 0;
  const KeyUse use(RegistryAccess::kRead, handle, ~REGSAM{0});
  if (use.error != ERROR_SUCCESS) return use.error;
  const RegistryKey* shown = nullptr;
  const LONG error = use.FindValues(&shown);
  if (error == ERROR_SUCCESS) *layer = shown->Layer();
  return error;
}
