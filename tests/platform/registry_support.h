// Helpers of the tests of the registry.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>

#include <string>
#include <vector>

#include "child_process.h"
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

// Creates or opens the key, and closes it again.
inline LONG CreateStatus(const std::u16string& path, HKEY root = HKEY_CLASSES_ROOT,
                         REGSAM access = KEY_WRITE) {
  HKEY key = nullptr;
  const LONG error =
      RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr);
  if (error == ERROR_SUCCESS) {
    RegCloseKey(key);
  } else {
    EXPECT_EQ(key, nullptr);
  }
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

// A test of what threads and processes share.
class SharedRegistryTest : public RegistryTest {
 protected:
  ~SharedRegistryTest() override {
    for (const pid_t child : children_) {
      kill(child, SIGKILL);
      test::StatusOf(child);
    }
  }

  // A child that does nothing until the test's end; a bare one without what is done around forks.
  pid_t ForkIdle(bool bare) {
    const pid_t child = bare ? _Fork() : fork();
    if (child == 0) {
      for (;;) pause();
    }
    children_.push_back(child);
    return child;
  }

  // Opens the file that writers lock.
  int OpenLock() const {
    return open((file_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  }
  bool IsLocked() const {
    const int file = OpenLock();
    const bool locked = flock(file, LOCK_EX | LOCK_NB) != 0;
    close(file);
    return locked;
  }

 private:
  std::vector<pid_t> children_;
};

}  // namespace mirolta
