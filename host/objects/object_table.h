// The automation values behind script objects. A script object holds the number of a slot, never a
// pointer: nothing that a script does can reach freed memory.
#pragma once

#include <memory>
#include <vector>

#include "engine/engine_block.h"
#include "objects/member_table.h"

namespace mirolta::host {

enum class SlotKind : uint8_t {
  kFree,
  kDispatch,  // VT_DISPATCH
  kStream,    // VT_UNKNOWN, an IStream; VT_EMPTY once closed
  kUnknown,   // VT_UNKNOWN
  kArray,     // VT_ARRAY of any element type
};

struct ObjectSlot {
  SlotKind kind = SlotKind::kFree;
  SlotNumber number = kNoSlot;
  VARIANT value{};
  const void* owner = nullptr;  // the engine's object whose end is the slot's
  // For kDispatch: the members that were looked up. `described` is set by the first look-up, null
  // if there is no type information.
  bool is_looked_up = false;
  DescribedMembers* described = nullptr;
  MemberTable own;
  // For the table: the place in it, and the next of the slots that are free, or dropped.
  size_t index = 0;
  ObjectSlot* next = nullptr;

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
  // AddForOwner is Add for a slot whose owner is yet to be made. Unless SetOwner follows, the slot counts as dropped.
  [[nodiscard]] SlotNumber AddForOwner(SlotKind kind, const VARIANT& value);
  void SetOwner(SlotNumber number, const void* owner);
  // Find returns the slot, null if there is none of that number and kind. The pointer is valid
  // until the slot is freed: do not keep it across a call that may run a script.
  ObjectSlot* Find(SlotNumber number, SlotKind kind) {
    ObjectSlot* const slot = Find(number);
    return slot != nullptr && slot->kind == kind ? slot : nullptr;
  }
  // The same for a slot of any kind.
  ObjectSlot* Find(SlotNumber number) {
    const auto index = static_cast<size_t>(number & kMostIndex);
    if (number == kNoSlot || index / kChunk >= chunks_.size()) return nullptr;
    ObjectSlot* const slot = &chunks_[index / kChunk][index % kChunk];
    return slot->number == number ? slot : nullptr;
  }
  size_t Count() const { return count_; }
  // Remove frees the slot and clears its value.
  void Remove(SlotNumber number);
  // Clear removes every slot.
  void Clear();

  // Drop says that an object of the engine is gone; if it was the slot's owner, the slot is no longer found. It runs
  // while the engine frees memory, when nothing may call the engine: the value stays until ReleaseDropped.
  void Drop(SlotNumber number, const void* object);
  // ReleaseDropped clears the values of dropped slots.
  void ReleaseDropped() {
    if (dropped_ != nullptr || without_owner_ != kNoSlot) FreeDropped();
  }

 private:
  // A number has the index of its slot in the low bits and the count of slots added before in the others.
  static constexpr unsigned kIndexBits = 24;
  static constexpr size_t kMostIndex = (size_t{1} << kIndexBits) - 1;
  static constexpr size_t kChunk = 64;

  ObjectSlot* TakeFree();
  void Free(ObjectSlot* slot);
  void FreeDropped();

  // Slots do not move.
  std::vector<std::unique_ptr<ObjectSlot[]>> chunks_;
  ObjectSlot* free_ = nullptr;
  ObjectSlot* dropped_ = nullptr;
  SlotNumber without_owner_ = kNoSlot;
  SlotNumber added_ = 0;
  size_t count_ = 0;
};

}  // namespace mirolta::host
