// What the host knows of automation members, by the names that scripts use.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <unordered_map>
#include <vector>

#include "engine/call_site.h"
#include "platform.h"

namespace mirolta::host {

struct DescribedMembers;

struct Member {
  DISPID id = DISPID_UNKNOWN;
  // The table of the type information that describes the member; null if none does.
  DescribedMembers* described = nullptr;
  bool is_method = false;  // by type information
  const NameUse* use = nullptr;
  // The function that calls the member of its `this`, which the engine keeps; null if none was made.
  void* function = nullptr;
};

// Tables of what was looked up last, by addresses: hash tables divide, which costs more than the rest of a
// look-up.
inline constexpr size_t kRecent = 32;
inline size_t RecentIndex(const void* address) {
  return reinterpret_cast<uintptr_t>(address) / alignof(max_align_t) % kRecent;
}

// Keys are the engine's strings by address: equal strings are one, which the engine keeps
// (KeepName).
using MemberTable = std::unordered_map<const void*, Member>;

// The members that a type information describes. They are the same in all objects that have it.
struct DescribedMembers {
  OwnedReference<ITypeInfo> info;
  MemberTable members;  // none is ever removed

  // Find returns the member that was looked up by the name at this address, null if none was.
  Member* Find(const void* name) {
    RecentMember& recent = recent_[RecentIndex(name)];
    if (recent.name == name && name != nullptr) return recent.member;
    const auto found = members.find(name);
    if (found == members.end()) return nullptr;
    recent = {name, &found->second};
    return recent.member;
  }

 private:
  struct RecentMember {
    const void* name = nullptr;
    Member* member = nullptr;
  };
  RecentMember recent_[kRecent];
};

class DescribedTables {
 public:
  DescribedTables() = default;
  DescribedTables(const DescribedTables&) = delete;
  DescribedTables& operator=(const DescribedTables&) = delete;

  // Of returns the table of a type information; null if there are too many.
  // Errors: std::bad_alloc.
  DescribedMembers* Of(ITypeInfo* info);

  // The members that the shared functions call, by the function's number.
  struct Shared {
    const DescribedMembers* described;
    DISPID id;
  };
  std::vector<Shared> shared;

 private:
  std::vector<std::unique_ptr<DescribedMembers>> tables_;
};

// IsDescribed returns whether type information has a member of this id, and in *is_method whether
// it is a method.
bool IsDescribed(ITypeInfo* info, DISPID id, bool* is_method);

}  // namespace mirolta::host
