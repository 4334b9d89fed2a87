#include "objects/object_handle.h"

#include <string.h>

#include "engine/host_errors.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"

namespace mirolta::host {
namespace {

constexpr char kHandleKey[] = DUK_HIDDEN_SYMBOL("handle");
constexpr char kFinalizer[] = "finalizer";

// The bytes of the property. `owner` tells the handle from objects that inherit the property: the
// engine does not move objects, and the owner lives as long as they do.
struct Handle {
  SlotNumber number;
  const void* owner;
  const void* proxy;
};

// Pushes the property that the object at `index` has or inherits; null if it is no handle.
void* PushFoundHandle(duk_context* engine, duk_idx_t index) {
  duk_get_prop_heapptr(engine, index, ContextOf(engine).handle_name);
  duk_size_t size = 0;
  void* bytes = duk_get_buffer(engine, -1, &size);
  return size == sizeof(Handle) ? bytes : nullptr;
}

// Returns the bytes of the handle, which stay where they are as long as the object lives.
void* Attach(duk_context* engine, SlotNumber number) {
  ScriptContext& context = ContextOf(engine);
  const Handle handle = {number, duk_get_heapptr(engine, -1), nullptr};
  void* const bytes = duk_push_fixed_buffer(engine, sizeof handle);
  memcpy(bytes, &handle, sizeof handle);
  duk_put_prop_heapptr(engine, -2, context.handle_name);
  duk_push_heapptr(engine, context.finalizer);
  duk_set_finalizer(engine, -2);
  context.handles.Note(handle.owner, number);
  return bytes;
}

// The finalizer is inherited like any property and also runs for objects that are no handles.
duk_ret_t Finalize(duk_context* engine) {
  SlotNumber number = kNoSlot;
  if (HandleAt(engine, 0, &number)) ContextOf(engine).objects.Remove(number);
  return 0;
}

struct Making {
  MakeObject make;
  SlotNumber number;
};
duk_ret_t Make(duk_context* engine, void* data) {
  const auto* making = static_cast<const Making*>(data);
  return ThrowIfExhausted(engine, [&] {
    making->make(engine, making->number);
    return 1;
  });
}

}  // namespace

void InstallHandles(duk_context* engine) {
  ContextOf(engine).handle_name = KeepName(engine, kHandleKey);
  duk_push_c_function(engine, Finalize, 2);
  ContextOf(engine).finalizer = KeepValue(engine, kFinalizer);
}

void PushSlotObject(duk_context* engine, SlotKind kind, const VARIANT& value, MakeObject make) {
  ObjectTable& objects = ContextOf(engine).objects;
  Making making = {make, objects.Add(kind, value)};
  if (making.number == kNoSlot) ThrowStatus(engine, E_OUTOFMEMORY);
  if (duk_safe_call(engine, Make, &making, 0, 1) == DUK_EXEC_SUCCESS) return;
  objects.Remove(making.number);
  (void)duk_throw(engine);
}

void AttachHandle(duk_context* engine, SlotNumber number) {
  Attach(engine, number);
}

void AttachToProxy(duk_context* engine, SlotNumber number, void* handler) {
  void* const bytes = Attach(engine, number);
  duk_push_heapptr(engine, handler);
  duk_push_proxy(engine, 0);
  // A proxy's hidden properties are those of its target.
  Handle handle = {};
  memcpy(&handle, bytes, sizeof handle);
  handle.proxy = duk_get_heapptr(engine, -1);
  memcpy(bytes, &handle, sizeof handle);
  ContextOf(engine).handles.Note(handle.proxy, number);
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
  const void* object = duk_get_heapptr(engine, index);
  HandleCache& known = ContextOf(engine).handles;
  *number = known.Find(object);
  if (*number != kNoSlot) return true;
  if (object == nullptr || !duk_is_object(engine, index)) return false;
  Handle handle = {};
  if (const void* bytes = PushFoundHandle(engine, index)) memcpy(&handle, bytes, sizeof handle);
  duk_pop(engine);
  *number = handle.number;
  if (object != handle.owner && object != handle.proxy) return false;
  known.Note(object, handle.number);
  return true;
}

ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind) {
  SlotNumber number = kNoSlot;
  if (!HandleAt(engine, index, &number)) return nullptr;
  ObjectSlot* slot = ContextOf(engine).objects.Find(number);
  if (slot == nullptr) ThrowStatus(engine, kDisconnected);
  return slot->kind == kind ? slot : nullptr;
}

}  // namespace mirolta::host
