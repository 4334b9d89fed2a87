// What the host knows of automation members, by the names that scripts use.
#pragma once

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
  NameUse use;
  // The function that calls the member of its `this`, which the engine keeps; null if none was made.
  void* function = nullptr;
};

// Keys are the engine's strings by address: equal strings are one, which the engine keeps
// (KeepName).
using MemberTable = std::unordered_map<const void*, Member>;

// The members that a type information describes. They are the same in all objects that have it.
struct DescribedMembers {
  OwnedReference<ITypeInfo> info;
  MemberTable members;
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
