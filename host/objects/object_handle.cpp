#include "objects/object_handle.h"

#include "engine/host_errors.h"
#include "engine/script_context.h"

namespace mirolta::host {

void PushSlotObject(duk_context* engine, SlotKind kind, const VARIANT& value, MakeObject make) {
  ObjectTable& objects = ContextOf(engine).objects;
  const SlotNumber number = objects.AddForOwner(kind, value);
  if (number == kNoSlot) ThrowStatus(engine, E_OUTOFMEMORY);
  make(engine, number);
}

void AttachHandle(duk_context* engine, SlotNumber number) {
  void* const owner = duk_get_heapptr(engine, -1);
  HeaderOf(owner)->slot = number;
  ContextOf(engine).objects.SetOwner(number, owner);
}

void AttachToProxy(duk_context* engine, SlotNumber number, void* handler) {
  AttachHandle(engine, number);
  duk_push_heapptr(engine, handler);
  duk_push_proxy(engine, 0);
  HeaderOf(duk_get_heapptr(engine, -1))->slot = number;
}

void PushPlainObject(duk_context* engine, SlotNumber number) {
  duk_push_object(engine);
  AttachHandle(engine, number);
}

void ThrowIfClosed(duk_context* engine, duk_idx_t index) {
  const ObjectSlot* slot = SlotAt(engine, index, SlotKind::kStream);
  if (slot != nullptr && IsClosedStream(*slot)) ThrowStatus(engine, kStreamClosed);
}

bool HandleAt(duk_context* engine, duk_idx_t index, SlotNumber* number) {
  *number = SlotOfBlock(duk_get_heapptr(engine, index));
  return *number != kNoSlot;
}

ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind) {
  SlotNumber number = kNoSlot;
  if (!HandleAt(engine, index, &number)) return nullptr;
  ObjectSlot* slot = ContextOf(engine).objects.Find(number);
  if (slot == nullptr) ThrowStatus(engine, kDisconnected);
  return slot->kind == kind ? slot : nullptr;
}

}  // namespace mirolta::host
