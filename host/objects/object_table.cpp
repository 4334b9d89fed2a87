#include "objects/object_table.h"

#include <new>

namespace mirolta::host {

SlotNumber ObjectTable::Add(SlotKind kind, const VARIANT& value) {
  try {
    ObjectSlot& slot = slots_[last_number_ + 1];
    slot.kind = kind;
    slot.number = last_number_ + 1;
    slot.value = value;
    return ++last_number_;
  } catch (const std::bad_alloc&) {
    VARIANT unwanted = value;
    VariantClear(&unwanted);
    return kNoSlot;
  }
}

ObjectSlot* ObjectTable::Find(SlotNumber number, SlotKind kind) {
  ObjectSlot* slot = Find(number);
  return slot != nullptr && slot->kind == kind ? slot : nullptr;
}

ObjectSlot* ObjectTable::Find(SlotNumber number) {
  const auto found = slots_.find(number);
  return found != slots_.end() ? &found->second : nullptr;
}

void ObjectTable::SetTarget(SlotNumber number, const void* target) {
  ObjectSlot& slot = slots_.at(number);
  by_target_[target] = &slot;
  slot.target = target;
  recent_[RecentIndex(target)] = {target, &slot};
}

ObjectSlot* ObjectTable::LookUpTarget(const void* target) {
  const auto found = by_target_.find(target);
  if (found == by_target_.end()) return nullptr;
  recent_[RecentIndex(target)] = {target, found->second};
  return found->second;
}

void ObjectTable::Remove(SlotNumber number) {
  const auto found = slots_.find(number);
  if (found == slots_.end()) return;
  // Erased before the value is released, which may re-enter.
  VARIANT value = found->second.value;
  const auto target = by_target_.find(found->second.target);
  if (target != by_target_.end() && target->second == &found->second) by_target_.erase(target);
  RecentTarget& recent = recent_[RecentIndex(found->second.target)];
  if (recent.slot == &found->second) recent = {};
  slots_.erase(found);
  VariantClear(&value);
}

void ObjectTable::Clear() {
  while (!slots_.empty()) Remove(slots_.begin()->first);
}

}  // namespace mirolta::host
