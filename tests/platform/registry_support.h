// Helpers of the tests of the registry.
#pragma once

#include <string>
#include <vector>

#include "system_support.h"

namespace mirolta {

// An open key, closed at the end of its scope.
class Key {
 public:
  explicit Key(const std::u16string& path, HKEY root = HKEY_CLASSES_ROOT,
               REGSAM access = KEY_ALL_ACCESS) {
    EXPECT_EQ(RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, access, nullptr, &key_, nullptr),
              ERROR_SUCCESS);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() { RegCloseKey(key_); }
  operator HKEY() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

inline LONG SetText(HKEY key, const char16_t* name, const std::u16string& text,
                    DWORD type = REG_SZ) {
  return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() * 2 + 2));
}

// The text of a value, or the error number in angle brackets.
inline std::u16string GetText(HKEY key, const char16_t* name) {
  WCHAR text[512];
  DWORD size = sizeof(text);
  DWORD type = 99;
  const LONG error =
      RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
  if (error != ERROR_SUCCESS) return Wide("<" + std::to_string(error) + ">");
  return std::u16string(text, size / 2 - 1);
}

inline LONG OpenStatus(const std::u16string& path, HKEY root = HKEY_CLASSES_ROOT) {
  HKEY key = nullptr;
  const LONG error = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key);
  if (error == ERROR_SUCCESS) RegCloseKey(key);
  return error;
}

inline std::vector<std::string> SubkeysOf(HKEY key) {
  std::vector<std::string> names;
  WCHAR name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) break;
    EXPECT_EQ(length, std::u16string(name).size());
    names.push_back(Narrow(name));
  }
  return names;
}

inline std::vector<std::string> ValuesOf(HKEY key) {
  std::vector<std::string> names;
  WCHAR name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) break;
    names.push_back(Narrow(name));
  }
  return names;
}

using Names = std::vector<std::string>;

}  // namespace mirolta
