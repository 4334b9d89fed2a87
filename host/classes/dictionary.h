// Scripting.Dictionary: values by key, in the order in which the keys were added.
#pragma once

#include <list>
#include <unordered_map>

#include "classes/host_object.h"

namespace mirolta::host {

class Dictionary final : public HostObject {
 public:
  const HostClass& Class() const override;

  void Add(HostCall& call);
  void GetCompareMode(HostCall& call) const;
  void PutCompareMode(HostCall& call);
  void GetCount(HostCall& call) const;
  void Exists(HostCall& call) const;
  void GetItem(HostCall& call);
  void PutItem(HostCall& call);
  void Items(HostCall& call) const;
  void PutKey(HostCall& call);
  void Keys(HostCall& call) const;
  void Remove(HostCall& call);
  void RemoveAll(HostCall& call);
  void NewEnum(HostCall& call) const;

 private:
  struct Entry {
    ScopedVariant key;
    ScopedVariant item;
  };
  using Entries = std::list<Entry>;

  ~Dictionary() override = default;

  Units FormOf(const VARIANT& key) const;
  // FindOrAdd returns the entry of a key; a new one has the item Empty.
  Entry& FindOrAdd(const VARIANT& key);
  Entry& AddEntry(Units form, const VARIANT& key);
  ValueList AllKeys() const;

  int32_t compare_mode_ = 0;
  Entries entries_;
  std::unordered_map<Units, Entries::iterator> by_form_;  // by comparison form
};

extern const HostClass kDictionaryClass;
// Errors: throws std::bad_alloc.
HostObject* NewDictionary();

}  // namespace mirolta::host
