// An empty registry in memory, and listings of its content.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <map>
#include <string>

#include "platform.h"
#include "portable/registry_mode.h"
#include "text.h"

namespace mirolta::test {

inline std::string Narrow(const OLECHAR* text) {
  const INT size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(size), 0);
  WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
  bytes.resize(static_cast<size_t>(size) - 1);
  return bytes;
}

inline Text Wide(const std::string& bytes) {
  const INT size = MultiByteToWideChar(CP_UTF8, 0, bytes.c_str(), -1, nullptr, 0);
  Text text(static_cast<size_t>(size), 0);
  MultiByteToWideChar(CP_UTF8, 0, bytes.c_str(), -1, text.data(), size);
  text.resize(static_cast<size_t>(size) - 1);
  return text;
}

// Everything below the classes root. A key is a row of its own without text, a value one of the
// form "key\\path|name" with its text; the default value's name is "@".
using Rows = std::map<std::string, std::string>;

inline void AddRows(HKEY key, const std::string& path, Rows* rows) {
  OLECHAR name[MAX_PATH];
  OLECHAR data[2048];
  for (DWORD i = 0;; ++i) {
    DWORD length = MAX_PATH;
    DWORD size = sizeof(data);
    DWORD type = REG_NONE;
    if (RegEnumValueW(key, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(data),
                      &size) != ERROR_SUCCESS) {
      break;
    }
    EXPECT_EQ(type, REG_SZ) << path;
    (*rows)[path + "|" + (length == 0 ? "@" : Narrow(name))] = Narrow(data);
  }
  for (DWORD i = 0;; ++i) {
    DWORD length = MAX_PATH;
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
      break;
    }
    const std::string below = path.empty() ? Narrow(name) : path + "\\" + Narrow(name);
    (*rows)[below] = "";
    HKEY subkey = nullptr;
    ASSERT_EQ(RegOpenKeyExW(key, name, 0, KEY_READ, &subkey), ERROR_SUCCESS) << below;
    AddRows(subkey, below, rows);
    RegCloseKey(subkey);
  }
}

inline Rows AllRows() {
  Rows rows;
  AddRows(HKEY_CLASSES_ROOT, "", &rows);
  return rows;
}

// The rows of `rows` whose key is `path` or below it.
inline Rows RowsBelow(const Rows& rows, const std::string& path) {
  Rows found;
  for (const auto& [key, text] : rows) {
    const bool below =
        key.compare(0, path.size(), path) == 0 &&
        (key.size() == path.size() || key[path.size()] == '\\' || key[path.size()] == '|');
    if (below) found[key] = text;
  }
  return found;
}

class RegistrationTest : public testing::Test {
 protected:
  void SetUp() override {
    // A file that is not there: the registry in memory starts empty.
    setenv("MIROLTA_REGISTRY", "/nonexistent/registry.reg", 1);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    ASSERT_EQ(AllRows(), Rows());
  }
  void TearDown() override { MiroltaRegistryInMemory(FALSE); }

  // Makes a key, with a default value unless it is null.
  static void WriteKey(const std::string& path, const OLECHAR* text) {
    const size_t units = text != nullptr ? std::char_traits<OLECHAR>::length(text) + 1 : 0;
    WriteKey(path, REG_SZ, text, units);
  }
  // The same with a default value of any type, of `units` code units.
  static void WriteKey(const std::string& path, DWORD type, const OLECHAR* data, size_t units) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, Wide(path).c_str(), 0, nullptr,
                              REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    if (data != nullptr) {
      EXPECT_EQ(RegSetValueExW(key, nullptr, 0, type, reinterpret_cast<const BYTE*>(data),
                               static_cast<DWORD>(units * sizeof(OLECHAR))),
                ERROR_SUCCESS);
    }
    RegCloseKey(key);
  }
};

}  // namespace mirolta::test
