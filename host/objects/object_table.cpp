#include "objects/object_table.h"

#include <new>

namespace mirolta::host {

// Returns a free slot that has its index as number.
// Errors: std::bad_alloc.
ObjectSlot* ObjectTable::TakeFree() {
  if (free_ == nullptr) {
    const size_t first = chunks_.size() * kChunk;
    if (first > kMostIndex) throw std::bad_alloc();
    chunks_.push_back(std::make_unique<ObjectSlot[]>(kChunk));
    ObjectSlot* const slots = chunks_.back().get();
    for (size_t i = kChunk; i > 0; --i) {
      slots[i - 1].index = first + i - 1;
      slots[i - 1].next = free_;
      free_ = &slots[i - 1];
    }
  }
  ObjectSlot* const slot = free_;
  free_ = slot->next;
  return slot;
}

SlotNumber ObjectTable::Add(SlotKind kind, const VARIANT& value) {
  try {
    ObjectSlot* const slot = TakeFree();
    slot->kind = kind;
    slot->number = (++added_ << kIndexBits) | slot->index;
    slot->value = value;
    ++count_;
    return slot->number;
  } catch (const std::bad_alloc&) {
    VARIANT unwanted = value;
    VariantClear(&unwanted);
    return kNoSlot;
  }
}

SlotNumber ObjectTable::AddForOwner(SlotKind kind, const VARIANT& value) {
  ReleaseDropped();
  without_owner_ = Add(kind, value);
  return without_owner_;
}

void ObjectTable::SetOwner(SlotNumber number, const void* owner) {
  without_owner_ = kNoSlot;
  if (ObjectSlot* const slot = Find(number)) slot->owner = owner;
}

// Makes the slot, which is not found any more, free, and then clears its value: the release may re-enter.
void ObjectTable::Free(ObjectSlot* slot) {
  VARIANT value = slot->value;
  slot->kind = SlotKind::kFree;
  slot->value = {};
  slot->owner = nullptr;
  slot->is_looked_up = false;
  slot->described = nullptr;
  if (!slot->own.empty()) MemberTable().swap(slot->own);
  slot->next = free_;
  free_ = slot;
  VariantClear(&value);
}

void ObjectTable::Remove(SlotNumber number) {
  ObjectSlot* const slot = Find(number);
  if (slot == nullptr) return;
  slot->number = kNoSlot;
  --count_;
  Free(slot);
}

void ObjectTable::Drop(SlotNumber number, const void* object) {
  ObjectSlot* const slot = Find(number);
  if (slot == nullptr || slot->owner != object) return;
  slot->number = kNoSlot;
  --count_;
  slot->next = dropped_;
  dropped_ = slot;
}

void ObjectTable::FreeDropped() {
  const SlotNumber unowned = without_owner_;
  without_owner_ = kNoSlot;
  Drop(unowned, nullptr);
  while (dropped_ != nullptr) {
    ObjectSlot* const slot = dropped_;
    dropped_ = slot->next;
    Free(slot);
  }
}

void ObjectTable::Clear() {
  ReleaseDropped();
  for (const auto& chunk : chunks_) {
    for (size_t i = 0; i < kChunk; ++i) Remove(chunk[i].number);
  }
}

}  // namespace mirolta::host
