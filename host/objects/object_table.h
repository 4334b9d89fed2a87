// The automation values behind script objects. A script object holds the number of a slot, never a
// pointer: nothing that a script does can reach freed memory.
#pragma once

#include <unordered_map>

#include "objects/member_table.h"

namespace mirolta::host {

enum class SlotKind : uint8_t {
  kFree,
  kDispatch,  // VT_DISPATCH
  kStream,    // VT_UNKNOWN, an IStream; VT_EMPTY once closed
  kUnknown,   // VT_UNKNOWN
  kArray,     // VT_ARRAY of any element type
};

// Slots are numbered in the order of adding. Numbers are never reused: a stale one finds nothing.
using SlotNumber = uint64_t;
inline constexpr SlotNumber kNoSlot = 0;

struct ObjectSlot {
  SlotKind kind = SlotKind::kFree;
  SlotNumber number = kNoSlot;
  VARIANT value{};
  const void* target = nullptr;
  // For kDispatch: the members that were looked up. `described` is set by the first look-up, null
  // if there is no type information.
  bool is_looked_up = false;
  DescribedMembers* described = nullptr;
  MemberTable own;

  // FindMember returns the member that was looked up by the name at this address, null if none was.
  Member* FindMember(const void* name) {
    if (described != nullptr) {
      if (Member* const member = described->Find(name)) return member;
    }
    const auto found = own.find(name);
    return found != own.end() ? &found->second : nullptr;
  }
};

inline bool IsClosedStream(const ObjectSlot& slot) {
  return slot.kind == SlotKind::kStream && slot.value.vt == VT_EMPTY;
}

class ObjectTable {
 public:
  ObjectTable() = default;
  ObjectTable(const ObjectTable&) = delete;
  ObjectTable& operator=(const ObjectTable&) = delete;
  ~ObjectTable() { Clear(); }

  // Add takes ownership of `value` and returns the number of its slot.
  // Errors: kNoSlot if memory ran out; `value` is then cleared.
  [[nodiscard]] SlotNumber Add(SlotKind kind, const VARIANT& value);
  // Find returns the slot, null if there is none of that number and kind. The pointer is valid
  // until the slot is freed: do not keep it across a call that may run a script.
  ObjectSlot* Find(SlotNumber number, SlotKind kind);
  // The same for a slot of any kind.
  ObjectSlot* Find(SlotNumber number);
  // SetTarget says which engine object is the target of the slot's proxy; FindTarget returns the
  // slot of a target that lives, null if the slot was freed.
  // Errors: std::bad_alloc.
  void SetTarget(SlotNumber number, const void* target);
  ObjectSlot* FindTarget(const void* target) {
    const RecentTarget& recent = recent_[RecentIndex(target)];
    return recent.target == target && target != nullptr ? recent.slot : LookUpTarget(target);
  }
  size_t Count() const { return slots_.size(); }
  // Remove frees the slot and clears its value.
  void Remove(SlotNumber number);
  // Clear removes every slot.
  void Clear();

 private:
  // The targets that were looked up last.
  struct RecentTarget {
    const void* target = nullptr;
    ObjectSlot* slot = nullptr;
  };

  ObjectSlot* LookUpTarget(const void* target);

  SlotNumber last_number_ = kNoSlot;
  RecentTarget recent_[kRecent];
  std::unordered_map<SlotNumber, ObjectSlot> slots_;
  // If the engine has no memory to finalize a target, its slot stays, and another object may get
  // the target's address: SetTarget then replaces the row.
  std::unordered_map<const void*, ObjectSlot*> by_target_;
};

}  // namespace mirolta::host
