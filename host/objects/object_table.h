// The automation values that script objects stand for. A script object carries the number of a
// slot, never a pointer, so that nothing a script does can reach memory that is not there.
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

// Slots are counted as they are added. No number is ever given twice: one that is out of date finds
// nothing, whatever was added since.
using SlotNumber = uint64_t;
inline constexpr SlotNumber kNoSlot = 0;

struct ObjectSlot {
  SlotKind kind = SlotKind::kFree;
  VARIANT value{};
  std::map<Units, DISPID> ids;  // of the names that the object was asked for
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

  // Add takes over `value`, whatever happens, and returns its number; kNoSlot if memory is short.
  [[nodiscard]] SlotNumber Add(SlotKind kind, const VARIANT& value);
  // Find returns null if the number holds nothing of that kind. The result lasts until the slot is
  // freed: keep no pointer over a call that may run a script.
  ObjectSlot* Find(SlotNumber number, SlotKind kind);
  // The slot of any kind, or null.
  ObjectSlot* Find(SlotNumber number);
  size_t Count() const { return slots_.size(); }
  // Frees the slot and gives its value back.
  void Remove(SlotNumber number);
  // Gives every value back.
  void Clear();

 private:
  SlotNumber last_number_ = kNoSlot;
  std::unordered_map<SlotNumber, ObjectSlot> slots_;
};

}  // namespace mirolta::host
