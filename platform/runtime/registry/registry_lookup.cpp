#include "registry/registry_lookup.h"

namespace mirolta::runtime {
namespace {

// An open key that closes itself.
struct OpenedKey {
  OpenedKey() = default;
  OpenedKey(const OpenedKey&) = delete;
  OpenedKey& operator=(const OpenedKey&) = delete;
  ~OpenedKey() {
    if (key != nullptr) RegCloseKey(key);
  }
  HKEY key = nullptr;
};

}  // namespace

LONG SetText(WideText* text, LPCWSTR a, LPCWSTR b, LPCWSTR c, LPCWSTR d, LPCWSTR e) {
  text->Shorten(0);
  for (const LPCWSTR part : {a, b, c, d, e}) {
    if (!text->Append(part, WideLength(part))) return ERROR_OUTOFMEMORY;
  }
  return text->Append(u'\0') ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
}

LONG ReadText(LPCWSTR path, LPCWSTR name, WideText* text) {
  OpenedKey opened;
  LONG error = RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &opened.key);
  DWORD type = REG_NONE;
  // Another process may set a longer text between the two queries.
  for (DWORD size = 0; error == ERROR_SUCCESS || error == ERROR_MORE_DATA;) {
    if (!text->Resize(size / sizeof(WCHAR))) return ERROR_OUTOFMEMORY;
    BYTE* place = reinterpret_cast<BYTE*>(text->Data());
    error = RegQueryValueExW(opened.key, name, nullptr, &type, size == 0 ? nullptr : place, &size);
    if (error != ERROR_SUCCESS) continue;
    if ((type != REG_SZ && type != REG_EXPAND_SZ) || size < sizeof(WCHAR)) {
      return ERROR_FILE_NOT_FOUND;
    }
    if (text->IsEmpty()) continue;
    text->Shorten(size / sizeof(WCHAR));
    return ERROR_SUCCESS;
  }
  return error;
}

LONG WriteText(LPCWSTR path, LPCWSTR name, LPCWSTR text) {
  OpenedKey opened;
  const LONG error = RegCreateKeyExW(HKEY_CLASSES_ROOT, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                     KEY_WRITE, nullptr, &opened.key, nullptr);
  if (error != ERROR_SUCCESS) return error;
  const DWORD size = static_cast<DWORD>((WideLength(text) + 1) * sizeof(WCHAR));
  return RegSetValueExW(opened.key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), size);
}

LONG SubkeyName(LPCWSTR path, DWORD index, WCHAR (&name)[kKeyNameCapacity]) {
  OpenedKey opened;
  const LONG error = RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &opened.key);
  if (error != ERROR_SUCCESS) return error;
  DWORD length = kKeyNameCapacity;
  return RegEnumKeyExW(opened.key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
}

LONG DeleteKeyTree(LPCWSTR path) {
  WCHAR name[kKeyNameCapacity];
  LONG error;
  while ((error = SubkeyName(path, 0, name)) == ERROR_SUCCESS) {
    WideText below;
    error = SetText(&below, path, u"\\", name);
    if (error == ERROR_SUCCESS) error = DeleteKeyTree(below.Data());
    if (error != ERROR_SUCCESS) return error;
  }
  if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  return error == ERROR_NO_MORE_ITEMS ? RegDeleteKeyW(HKEY_CLASSES_ROOT, path) : error;
}

}  // namespace mirolta::runtime
