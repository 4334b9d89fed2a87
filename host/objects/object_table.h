// The automation values behind script objects. A script object holds the number of a slot, never a
// pointer: nothing that a script does can reach freed memory.
#pragma once

#include <map>
#include <unordered_map>

#include "values/text_encoding.h"

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
  VARIANT value{};
  std::map<Units, DISPID> ids;  // by the names that were looked up
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
  size_t Count() const { return slots_.size(); }
  // Remove frees the slot and clears its value.
  void Remove(SlotNumber number);
  // Clear removes every slot.
  void Clear();

 private:
  SlotNumber last_number_ = kNoSlot;
  std::unordered_map<SlotNumber, ObjectSlot> slots_;
};

}  // namespace mirolta::host
