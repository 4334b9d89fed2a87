#include "registrar.h"

#include "registry_script.h"

namespace mirolta {

namespace {

HRESULT FromError(LONG error) {
  return error == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

bool IsMissing(LONG error) {
  return error == ERROR_FILE_NOT_FOUND;
}

LONG WriteText(HKEY key, const OLECHAR* name, const OLECHAR* text) {
  DWORD length = 0;
  while (text[length] != 0) ++length;
  return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                        (length + 1) * static_cast<DWORD>(sizeof(OLECHAR)));
}

// Deletes a key with all its subkeys. A key that does not exist is no failure.
LONG DeleteTree(HKEY parent, const OLECHAR* name) {
  HKEY key = nullptr;
  LONG error = RegOpenKeyExW(parent, name, 0, KEY_ALL_ACCESS, &key);
  if (IsMissing(error)) return ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) return error;
  // Not in the frame, since trees may be deep.
  OLECHAR* const subkey = NewArray<OLECHAR>(SizeConstant(MAX_PATH));
  for (;;) {
    error = ERROR_OUTOFMEMORY;
    if (subkey == nullptr) break;
    // Always index 0: the others move up when a subkey is deleted.
    DWORD length = MAX_PATH;
    error = RegEnumKeyExW(key, 0, subkey, &length, nullptr, nullptr, nullptr, nullptr);
    if (error != ERROR_SUCCESS) break;
    error = DeleteTree(key, subkey);
    if (error != ERROR_SUCCESS) break;
  }
  delete[] subkey;
  RegCloseKey(key);
  return error == ERROR_NO_MORE_ITEMS ? RegDeleteKeyW(parent, name) : error;
}

class Check final : public RegistryAction {
 public:
  HRESULT EnterKey(HKEY, const OLECHAR*, KeyRule, const OLECHAR*, HKEY*) override { return S_OK; }
  HRESULT LeaveKey(HKEY, const OLECHAR*, KeyRule, HKEY) override { return S_OK; }
  HRESULT Value(HKEY, const OLECHAR*, const OLECHAR*) override { return S_OK; }
};

class Write final : public RegistryAction {
 public:
  HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule rule, const OLECHAR* value,
                   HKEY* key) override {
    LONG error = rule == KeyRule::kForceRemove ? DeleteTree(parent, name) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return FromError(error);
    error = RegCreateKeyExW(parent, name, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                            nullptr, key, nullptr);
    if (error != ERROR_SUCCESS) return FromError(error);
    if (value != nullptr) error = WriteText(*key, nullptr, value);
    if (error != ERROR_SUCCESS) RegCloseKey(*key);
    return FromError(error);
  }
  HRESULT LeaveKey(HKEY, const OLECHAR*, KeyRule, HKEY key) override {
    return FromError(RegCloseKey(key));
  }
  HRESULT Value(HKEY key, const OLECHAR* name, const OLECHAR* text) override {
    return FromError(WriteText(key, name, text));
  }
};

// Deletes a key's default value only if it is `text`: any other belongs to another program.
LONG DeleteOwnText(HKEY key, const OLECHAR* text) {
  OLECHAR found[kLongestRegistryText + 1];
  DWORD size = sizeof found;
  DWORD type = REG_NONE;
  const LONG error =
      RegQueryValueExW(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(found), &size);
  if (IsMissing(error) || error == ERROR_MORE_DATA) return ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) return error;
  if (type != REG_SZ) return ERROR_SUCCESS;
  const DWORD length = size / static_cast<DWORD>(sizeof(OLECHAR));
  DWORD same = 0;
  while (same < length && found[same] != 0 && found[same] == text[same]) ++same;
  const bool ends = same == length || found[same] == 0;
  return ends && text[same] == 0 ? RegDeleteValueW(key, nullptr) : ERROR_SUCCESS;
}

class Remove final : public RegistryAction {
 public:
  HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule rule, const OLECHAR* value,
                   HKEY* key) override {
    *key = nullptr;
    if (parent == nullptr) return S_OK;
    // The content is deleted with the key.
    if (rule == KeyRule::kForceRemove) return FromError(DeleteTree(parent, name));
    LONG error = RegOpenKeyExW(parent, name, 0, KEY_ALL_ACCESS, key);
    if (IsMissing(error)) return S_OK;
    // Immediately, even if the key is deleted later: another program may add to the key until then.
    if (error == ERROR_SUCCESS && rule == KeyRule::kPlain && value != nullptr) {
      error = DeleteOwnText(*key, value);
      if (error != ERROR_SUCCESS) RegCloseKey(*key);
    }
    return FromError(error);
  }
  HRESULT LeaveKey(HKEY parent, const OLECHAR* name, KeyRule rule, HKEY key) override {
    if (key == nullptr) return S_OK;
    OLECHAR subkey[MAX_PATH];
    DWORD length = MAX_PATH;
    const bool holds_others =
        RegEnumKeyExW(key, 0, subkey, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
    RegCloseKey(key);
    // Subkeys that the script does not list belong to other programs.
    if (rule == KeyRule::kNoRemove || holds_others) return S_OK;
    return FromError(RegDeleteKeyW(parent, name));
  }
  HRESULT Value(HKEY key, const OLECHAR* name, const OLECHAR*) override {
    if (key == nullptr) return S_OK;
    const LONG error = RegDeleteValueW(key, name);
    return IsMissing(error) ? S_OK : FromError(error);
  }
};

HRESULT CheckThenRun(const BYTE* text, DWORD length, const OLECHAR* module_file,
                     RegistryAction& action) {
  Check check;
  const HRESULT status = RunRegistryScript(text, length, module_file, check);
  return FAILED(status) ? status : RunRegistryScript(text, length, module_file, action);
}

}  // namespace

HRESULT RegisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file) {
  Write write;
  return CheckThenRun(text, length, module_file, write);
}

HRESULT UnregisterScript(const BYTE* text, DWORD length, const OLECHAR* module_file) {
  Remove remove;
  return CheckThenRun(text, length, module_file, remove);
}

}  // namespace mirolta
