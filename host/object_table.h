// The automation values that script objects stand for. A script object carries the number of a
// slot, never a pointer, so that nothing a script does can reach memory that is not there.
#pragma once

#include <map>
#include <vector>

#include "text_encoding.h"

namespace mirolta {

enum class SlotKind : uint8_t {
  kFree,
  kDispatch,  // VT_DISPATCH
  kStream,    // VT_UNKNOWN, an IStream; VT_EMPTY once closed
  kUnknown,   // VT_UNKNOWN
  kArray,     // VT_ARRAY of any element type
};

struct ObjectSlot {
  SlotKind kind = SlotKind::kFree;
  VARIANT value{};
  std::map<Units, DISPID> ids;  // of the names that the object was asked for
};

class ObjectTable {
 public:
  ObjectTable() = default;
  ObjectTable(const ObjectTable&) = delete;
  ObjectTable& operator=(const ObjectTable&) = delete;
  ~ObjectTable() { Clear(); }

  // Add takes over `value` and returns its number.
  uint32_t Add(SlotKind kind, const VARIANT& value);
  // Find returns null if the number holds nothing of that kind. The result lasts until the next
  // Add: keep no pointer over a call that may run a script.
  ObjectSlot* Find(uint32_t number, SlotKind kind);
  SlotKind KindOf(uint32_t number) const;
  // Frees the slot and gives its value back.
  void Remove(uint32_t number);
  // Gives every value back.
  void Clear();

 private:
  std::vector<ObjectSlot> slots_;
  std::vector<uint32_t> free_;
};

}  // namespace mirolta
