#include <algorithm>

#include "portable/registry.h"
#include "registry_store.h"
#include "registry_text.h"
#include "utf8_text.h"

namespace mirolta {
namespace {

constexpr REGSAM kQuery = 0x01;
constexpr REGSAM kSetValue = 0x02;
constexpr REGSAM kCreate = 0x04;
constexpr REGSAM kEnumerate = 0x08;
constexpr REGSAM kMaximum = 0x02000000;  // all that is allowed

struct RootName {
  uint32_t number;
  const WCHAR* name;
};
constexpr RootName kRoots[] = {
    {0x80000000u, u"HKEY_CLASSES_ROOT"},
    {0x80000001u, u"HKEY_CURRENT_USER"},
    {0x80000002u, u"HKEY_LOCAL_MACHINE"},
};

// An open key is its path from the outermost key: it outlives changes by other processes.
struct OpenKey {
  OpenKey* next = nullptr;
  REGSAM access = 0;
  RuntimeArray<WCHAR> path;
};

OpenKey* g_open_keys = nullptr;  // touched only inside a RegistryUse

NameView ViewOf(const RuntimeArray<WCHAR>& text) {
  return {text.data(), text.size()};
}

NameView ViewOf(LPCWSTR text) {
  return text == nullptr ? NameView{u"", 0} : NameView{text, WideLength(text)};
}

// What a handle stands for.
struct Place {
  const WCHAR* root = nullptr;  // a root's name
  const OpenKey* open = nullptr;

  NameView path() const { return open != nullptr ? ViewOf(open->path) : ViewOf(root); }
  bool Allows(REGSAM access) const {
    return open == nullptr || (open->access & (access | kMaximum)) != 0;
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

// The key of a handle. A root that the file does not have yet is made, in memory only.
LONG FindKey(const RegistryUse& use, HKEY handle, REGSAM access, RegistryKey** key, Place* place) {
  if (use.error() != ERROR_SUCCESS) return use.error();
  LONG error = PlaceOf(handle, place);
  if (error != ERROR_SUCCESS) return error;
  if (!place->Allows(access)) return ERROR_ACCESS_DENIED;
  if (place->root != nullptr) {
    bool made;
    return use.root()->MakePath(place->path(), key, &made);
  }
  *key = use.root()->FindPath(place->path());
  return *key == nullptr ? kErrorKeyDeleted : ERROR_SUCCESS;
}

LONG Open(const Place& from, LPCWSTR path, REGSAM access, HKEY* out) {
  OpenKey* open = NewRuntime<OpenKey>();
  const NameView base = from.path();
  const NameView below = ViewOf(path);
  if (open == nullptr || !open->path.Append(base.text, base.size) || !open->path.Append(u'\\') ||
      !open->path.Append(below.text, below.size)) {
    DeleteRuntime(open);
    return ERROR_OUTOFMEMORY;
  }
  open->access = access;
  open->next = g_open_keys;
  g_open_keys = open;
  *out = reinterpret_cast<HKEY>(open);
  return ERROR_SUCCESS;
}

// Text is kept as whole characters with a terminator, whatever a caller leaves out.
LONG TextAsKept(const BYTE* data, DWORD size, RuntimeArray<WCHAR>* text) {
  if (!text->Resize(size / sizeof(WCHAR))) return ERROR_OUTOFMEMORY;
  if (!text->empty()) std::memcpy(text->data(), data, text->size() * sizeof(WCHAR));
  if ((text->empty() || (*text)[text->size() - 1] != 0) && !text->Append(u'\0')) {
    return ERROR_OUTOFMEMORY;
  }
  return SurvivesFile(ViewOf(*text)) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

bool HasData(const RegistryValue* value, DWORD type, const BYTE* data, size_t size) {
  return value != nullptr && value->type == type && value->data.size() == size &&
         (size == 0 || std::memcmp(value->data.data(), data, size) == 0);
}

// Gives a value's type and data by the rules that querying and enumerating share.
LONG GiveData(const RegistryValue& value, DWORD* type, BYTE* data, DWORD* size) {
  if (type != nullptr) *type = value.type;
  if (size == nullptr) return ERROR_SUCCESS;
  const DWORD needed = static_cast<DWORD>(value.data.size());
  const bool fits = needed <= *size;
  if (data != nullptr && fits && needed != 0) std::memcpy(data, value.data.data(), needed);
  *size = needed;
  return data == nullptr || fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

// Gives a name; *length is the room with the terminator, then the length without.
LONG GiveName(NameView name, LPWSTR text, DWORD* length) {
  if (name.size >= *length) return ERROR_MORE_DATA;
  if (name.size != 0) std::memcpy(text, name.text, name.size * sizeof(WCHAR));
  text[name.size] = 0;
  *length = static_cast<DWORD>(name.size);
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace mirolta

using namespace mirolta;

extern "C" LONG RegOpenKeyExW(HKEY handle, LPCWSTR path, DWORD, REGSAM access, HKEY* out) {
  if (out == nullptr) return ERROR_INVALID_PARAMETER;
  *out = nullptr;
  const RegistryUse use(RegistryAccess::kRead);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, ~REGSAM{0}, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  if (key->FindPath(ViewOf(path)) == nullptr) return ERROR_FILE_NOT_FOUND;
  return Open(place, path, access, out);
}

extern "C" LONG RegCreateKeyExW(HKEY handle, LPCWSTR path, DWORD, LPWSTR, DWORD, REGSAM access,
                                void*, HKEY* out, DWORD* disposition) {
  if (out == nullptr) return ERROR_INVALID_PARAMETER;
  *out = nullptr;
  RegistryUse use(RegistryAccess::kWrite);
  Place place;
  RegistryKey* key = nullptr;
  LONG error = FindKey(use, handle, ~REGSAM{0}, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  const NameView below = ViewOf(path);
  bool made = false;
  if (key->FindPath(below) == nullptr) {
    if (!place.Allows(kCreate)) return ERROR_ACCESS_DENIED;
    if (!SurvivesFile(below)) return ERROR_INVALID_PARAMETER;
  }
  RegistryKey* target = nullptr;
  error = key->MakePath(below, &target, &made);
  if (error == ERROR_SUCCESS && made) error = use.Store();
  if (error == ERROR_SUCCESS) error = Open(place, path, access, out);
  if (error == ERROR_SUCCESS && disposition != nullptr) {
    *disposition = made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  }
  return error;
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
  RegistryUse use(RegistryAccess::kWrite);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, ~REGSAM{0}, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  RegistryKey* target = key->FindPath(ViewOf(path));
  if (target == nullptr) return ERROR_FILE_NOT_FOUND;
  RegistryKey* above = target->parent();
  const bool is_root = above == nullptr || above->parent() == nullptr;
  if (is_root || target->first_child() != nullptr) return ERROR_ACCESS_DENIED;
  above->RemoveChild(target);
  return use.Store();
}

extern "C" LONG RegDeleteValueW(HKEY handle, LPCWSTR name) {
  RegistryUse use(RegistryAccess::kWrite);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, kSetValue, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  return key->RemoveValue(ViewOf(name)) ? use.Store() : ERROR_FILE_NOT_FOUND;
}

extern "C" LONG RegSetValueExW(HKEY handle, LPCWSTR value_name, DWORD, DWORD type, const BYTE* data,
                               DWORD size) {
  const NameView name = ViewOf(value_name);
  if (data == nullptr && size != 0) return ERROR_INVALID_PARAMETER;
  if (name.size > kLongestValueName || HasControls(name) || !SurvivesFile(name)) {
    return ERROR_INVALID_PARAMETER;
  }
  RuntimeArray<WCHAR> text;
  size_t kept_size = size;
  if (IsTextType(type)) {
    const LONG error = TextAsKept(data, size, &text);
    if (error != ERROR_SUCCESS) return error;
    data = reinterpret_cast<const BYTE*>(text.data());
    kept_size = text.size() * sizeof(WCHAR);
  }
  RegistryUse use(RegistryAccess::kWrite);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, kSetValue, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  if (HasData(key->FindValue(name), type, data, kept_size)) return ERROR_SUCCESS;
  return key->SetValue(name, type, data, kept_size) ? use.Store() : ERROR_OUTOFMEMORY;
}

extern "C" LONG RegQueryValueExW(HKEY handle, LPCWSTR name, DWORD*, DWORD* type, BYTE* data,
                                 DWORD* size) {
  if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
  const RegistryUse use(RegistryAccess::kRead);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, kQuery, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  const RegistryValue* value = key->FindValue(ViewOf(name));
  return value == nullptr ? ERROR_FILE_NOT_FOUND : GiveData(*value, type, data, size);
}

extern "C" LONG RegEnumKeyExW(HKEY handle, DWORD index, LPWSTR name, DWORD* length, DWORD*,
                              LPWSTR key_class, DWORD* class_length, FILETIME* written) {
  if (name == nullptr || length == nullptr) return ERROR_INVALID_PARAMETER;
  const RegistryUse use(RegistryAccess::kRead);
  Place place;
  RegistryKey* key = nullptr;
  const LONG error = FindKey(use, handle, kEnumerate, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  const RegistryKey* child = key->ChildAt(index);
  if (child == nullptr) return ERROR_NO_MORE_ITEMS;
  // Keys have no classes and no times here.
  if (key_class != nullptr && class_length != nullptr && *class_length != 0) key_class[0] = 0;
  if (class_length != nullptr) *class_length = 0;
  if (written != nullptr) *written = {};
  return GiveName(child->name(), name, length);
}

extern "C" LONG RegEnumValueW(HKEY handle, DWORD index, LPWSTR name, DWORD* length, DWORD*,
                              DWORD* type, BYTE* data, DWORD* size) {
  if (name == nullptr || length == nullptr || (data != nullptr && size == nullptr)) {
    return ERROR_INVALID_PARAMETER;
  }
  const RegistryUse use(RegistryAccess::kRead);
  Place place;
  RegistryKey* key = nullptr;
  LONG error = FindKey(use, handle, kQuery, &key, &place);
  if (error != ERROR_SUCCESS) return error;
  const RegistryValue* value = key->ValueAt(index);
  if (value == nullptr) return ERROR_NO_MORE_ITEMS;
  const DWORD room = *length;
  error = GiveName(value->name(), name, length);
  if (error != ERROR_SUCCESS) return error;
  error = GiveData(*value, type, data, size);
  if (error != ERROR_SUCCESS) *length = room;
  return error;
}
