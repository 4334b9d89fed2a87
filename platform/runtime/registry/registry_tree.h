// The registry's content in memory: keys that hold keys and values, in insertion order.
#pragma once

#include "mirolta/registry.h"
#include "registry/named_list.h"

namespace mirolta::runtime {

constexpr unsigned kDeepestKey = 512;  // as on the platform

constexpr bool IsTextType(DWORD type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// A value, or a comment line of the file, kept in its place; the text of a comment is its data.
// Text values are 16-bit characters in native byte order, with the terminator.
struct RegistryValue {
  NamedListLinks<RegistryValue> links;
  bool is_comment = false;
  DWORD type = REG_NONE;
  RuntimeArray<WCHAR> name_text;  // empty: the default value
  RuntimeArray<BYTE> data;

  WideView Name() const { return ViewOf(name_text); }
  bool HasName() const { return !is_comment; }
  RegistryValue* Next() const { return links.next; }
};

// RegistryKey owns its values and the keys below it.
class RegistryKey {
 public:
  RegistryKey() = default;
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey();

  RegistryKey* Parent() { return parent_; }
  const RegistryKey* Parent() const { return parent_; }
  const RegistryKey* Next() const { return links.next; }
  const RegistryKey* FirstChild() const { return children_.First(); }
  const RegistryValue* FirstValue() const { return values_.First(); }
  WideView Name() const { return ViewOf(name_); }
  bool HasName() const { return true; }
  bool HasValues() const { return values_.NamedCount() != 0; }
  size_t ChildCount() const { return children_.NamedCount(); }
  // The file that the values come from (lower_registries.h); 0 is the one that is written.
  DWORD Layer() const { return layer_; }
  void SetLayer(DWORD layer) { layer_ = layer; }

  // By index, comments not counted; null past the end.
  const RegistryKey* ChildAt(DWORD index) const { return children_.At(index); }
  const RegistryValue* ValueAt(DWORD index) const { return values_.At(index); }
  RegistryKey* FindChild(WideView name) const { return children_.Find(name); }
  // Adds a key after the others; null if memory is short.
  RegistryKey* AddChild(WideView name);
  void RemoveChild(RegistryKey* child);

  const RegistryValue* FindValue(WideView name) const { return values_.Find(name); }
  // Sets a value; one of that name is replaced in its place. A new default value comes first,
  // others last.
  // Errors: false if memory is short; the key is unchanged.
  [[nodiscard]] bool SetValue(WideView name, DWORD type, const BYTE* data, size_t size);
  [[nodiscard]] bool AddComment(const char* text, size_t size);
  bool RemoveValue(WideView name);

  // CopyTo adds copies of the values and keys to the empty key `copy`.
  // Errors: false if memory is short; some of them may have been added.
  [[nodiscard]] bool CopyTo(RegistryKey* copy) const;
  // CopyValuesTo sets the values, without comments, in another key.
  // Errors: false if memory is short; some of them may have been set.
  [[nodiscard]] bool CopyValuesTo(RegistryKey* other) const;

  // FindPath follows names separated by backslashes; null if one is missing.
  RegistryKey* FindPath(WideView path);
  // MakePath does the same and adds missing keys; *made tells whether the last key is new.
  // Errors: ERROR_OUTOFMEMORY; ERROR_INVALID_PARAMETER for a name that is too long or has control
  //         characters, and for a path that is too deep. The tree is then unchanged.
  LONG MakePath(WideView path, RegistryKey** key, bool* made);

  NamedListLinks<RegistryKey> links;  // the list's own

 private:
  [[nodiscard]] bool AddValue(RuntimeOwner<RegistryValue> value, bool first);

  RegistryKey* parent_ = nullptr;
  NamedList<RegistryKey> children_;
  NamedList<RegistryValue> values_;
  RuntimeArray<WCHAR> name_;
  DWORD layer_ = 0;
};

}  // namespace mirolta::runtime
