// The registry's content in memory: keys that hold keys and values, in the order in which they
// came.
#pragma once

#include "portable/registry.h"
#include "registry/named_list.h"

namespace mirolta::runtime {

constexpr unsigned kDeepestKey = 512;  // as on the platform

constexpr bool IsTextType(DWORD type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// A value, or a comment line that the file has at this place; a comment's text is its data.
// Texts are kept as 16-bit characters in this processor's byte order, terminator included.
struct RegistryValue {
  NamedListLinks<RegistryValue> links;
  bool is_comment = false;
  DWORD type = REG_NONE;
  RuntimeArray<WCHAR> name_text;  // empty: the default value
  RuntimeArray<BYTE> data;

  WideView name() const { return ViewOf(name_text); }
  bool HasName() const { return !is_comment; }
  RegistryValue* next() const { return links.next; }
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
  const RegistryKey* next() const { return links.next; }
  const RegistryKey* first_child() const { return children_.first(); }
  const RegistryValue* first_value() const { return values_.first(); }
  WideView name() const { return ViewOf(name_); }
  bool HasName() const { return true; }

  // By index, null if there are not so many; comments do not count.
  const RegistryKey* ChildAt(DWORD index) const { return children_.At(index); }
  const RegistryValue* ValueAt(DWORD index) const { return values_.At(index); }
  RegistryKey* FindChild(WideView name) const { return children_.Find(name); }
  // Adds a key after the others; null if memory is short.
  RegistryKey* AddChild(WideView name);
  void RemoveChild(RegistryKey* child);

  const RegistryValue* FindValue(WideView name) const { return values_.Find(name); }
  // Sets a value, replacing one of that name at its place. A new default value comes first, others
  // last. False if memory is short; the key is then as it was.
  [[nodiscard]] bool SetValue(WideView name, DWORD type, const BYTE* data, size_t size);
  [[nodiscard]] bool AddComment(const char* text, size_t size);
  bool RemoveValue(WideView name);

  // CopyTo adds copies of the values and keys to the empty key `copy`; false if memory is short,
  // with some of them added.
  [[nodiscard]] bool CopyTo(RegistryKey* copy) const;

  // FindPath follows names parted by backslashes; null if one is missing.
  RegistryKey* FindPath(WideView path);
  // MakePath does so and adds what is missing. *made tells whether the last one was.
  // Errors: ERROR_OUTOFMEMORY; ERROR_INVALID_PARAMETER for a name that is too long or has control
  // characters, and for keys too deep. After a failure the tree is as it was.
  LONG MakePath(WideView path, RegistryKey** key, bool* made);

  NamedListLinks<RegistryKey> links;  // the list's own

 private:
  [[nodiscard]] bool AddValue(RegistryValue* value, bool first);

  RegistryKey* parent_ = nullptr;
  NamedList<RegistryKey> children_;
  NamedList<RegistryValue> values_;
  RuntimeArray<WCHAR> name_;
};

}  // namespace mirolta::runtime
