// The registry's content in memory: keys that hold keys and values, in the order in which they
// came.
#pragma once

#include "portable/registry.h"
#include "runtime_array.h"

namespace mirolta {

// What RegXxx return for a handle whose key is gone.
constexpr LONG kErrorKeyDeleted = 1018;

constexpr DWORD kRegMultiText = 7;     // REG_MULTI_SZ
constexpr unsigned kDeepestKey = 512;  // as on the platform
constexpr size_t kLongestKeyName = 255;
constexpr size_t kLongestValueName = 16383;

constexpr bool IsTextType(DWORD type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == kRegMultiText;
}

// Text that is not owned and not terminated.
struct NameView {
  const WCHAR* text;
  size_t size;
};

// SameName compares names letter case aside.
bool SameName(NameView a, NameView b);

// A value, or a comment line that the file has at this place; a comment's text is its data.
// Texts are kept as 16-bit characters in this processor's byte order, terminator included.
struct RegistryValue {
  RegistryValue* next = nullptr;
  bool is_comment = false;
  DWORD type = REG_NONE;
  RuntimeArray<WCHAR> name;  // empty: the default value
  RuntimeArray<BYTE> data;
};

// RegistryKey owns its values and the keys below it.
class RegistryKey {
 public:
  RegistryKey() = default;
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey();

  RegistryKey* parent() { return parent_; }
  const RegistryKey* parent() const { return parent_; }
  const RegistryKey* next() const { return next_; }
  const RegistryKey* first_child() const { return first_child_; }
  const RegistryValue* first_value() const { return first_value_; }
  NameView name() const { return {name_.data(), name_.size()}; }

  RegistryKey* FindChild(NameView name);
  // Adds a key after the others; null if memory is short.
  RegistryKey* AddChild(NameView name);
  void RemoveChild(RegistryKey* child);

  const RegistryValue* FindValue(NameView name) const;
  // Sets a value, replacing one of that name at its place. A new default value comes first, others
  // last. False if memory is short; the key is then as it was.
  [[nodiscard]] bool SetValue(NameView name, DWORD type, const BYTE* data, size_t size);
  [[nodiscard]] bool AddComment(const char* text, size_t size);
  bool RemoveValue(NameView name);

  // FindPath follows names parted by backslashes; null if one is missing.
  RegistryKey* FindPath(NameView path);
  // MakePath does so and adds what is missing. *made tells whether the last one was.
  // Errors: ERROR_OUTOFMEMORY; ERROR_INVALID_PARAMETER for a name that is too long or has control
  // characters, and for keys too deep. After a failure the tree is as it was.
  LONG MakePath(NameView path, RegistryKey** key, bool* made);

 private:
  RegistryKey* parent_ = nullptr;
  RegistryKey* next_ = nullptr;
  RegistryKey* first_child_ = nullptr;
  RegistryValue* first_value_ = nullptr;
  RuntimeArray<WCHAR> name_;
};

// TakeName splits the first name off a path; false at its end.
bool TakeName(NameView* path, NameView* name);

// HasControls tells whether a name could not stand in the file.
bool HasControls(NameView name);

}  // namespace mirolta
