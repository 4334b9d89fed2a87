#include "object_table.h"

#include <utility>

namespace mirolta {

uint32_t ObjectTable::Add(SlotKind kind, const VARIANT& value) {
  uint32_t number = 0;
  if (!free_.empty()) {
    number = free_.back();
    free_.pop_back();
  } else {
    number = static_cast<uint32_t>(slots_.size());
    slots_.emplace_back();
  }
  slots_[number].kind = kind;
  slots_[number].value = value;
  return number;
}

ObjectSlot* ObjectTable::Find(uint32_t number, SlotKind kind) {
  return KindOf(number) == kind ? &slots_[number] : nullptr;
}

SlotKind ObjectTable::KindOf(uint32_t number) const {
  return number < slots_.size() ? slots_[number].kind : SlotKind::kFree;
}

void ObjectTable::Remove(uint32_t number) {
  if (KindOf(number) == SlotKind::kFree) return;
  // Taken out before its release, which may come back here.
  VARIANT value = slots_[number].value;
  slots_[number] = ObjectSlot{};
  free_.push_back(number);
  VariantClear(&value);
}

void ObjectTable::Clear() {
  for (uint32_t number = 0; number < slots_.size(); ++number) Remove(number);
  slots_.clear();
  free_.clear();
}

}  // namespace mirolta
