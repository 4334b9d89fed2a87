// Script objects that stand for a slot of the object table. Only the object that a handle was
// attached to stands for the slot: objects that inherit from it, and a script's own proxies of it,
// stand for nothing.
#pragma once

#include "engine/engine_api.h"
#include "objects/object_table.h"

namespace mirolta::host {

// MakeObject pushes the script object of a slot: it attaches the handle and may show it by a proxy.
using MakeObject = void (*)(duk_context* engine, SlotNumber number);

// PushSlotObject adds `value` to the table, which takes it over in any case, and pushes its script
// object. The slot is freed when the engine drops the object, or at the engine's end if memory was
// too short then to run the finalizer.
// Errors: the engine's, and E_OUTOFMEMORY; `value` is then given back.
void PushSlotObject(duk_context* engine, SlotKind kind, const VARIANT& value, MakeObject make);

// For MakeObject: AttachHandle makes the object on top the one that stands for the slot.
// ShowByProxy takes that object on top and pushes a proxy of it, with the handler kept as
// `handler`, which stands for the slot too.
void AttachHandle(duk_context* engine, SlotNumber number);
void ShowByProxy(duk_context* engine, const char* handler);
// A MakeObject: an object without properties.
void PushPlainObject(duk_context* engine, SlotNumber number);

// ThrowIfClosed throws kStreamClosed if the value at `index` is a closed stream: what is no place
// for a stream says of a closed one that it is closed.
void ThrowIfClosed(duk_context* engine, duk_idx_t index);

// HandleAt tells the slot that the value at `index` itself stands for; false if it stands for none.
// The slot may be gone: a handle stays what it is. Runs no script.
bool HandleAt(duk_context* engine, duk_idx_t index, SlotNumber* number);
// SlotAt returns the slot of the value at `index` if it has that kind, else null.
// Errors: kDisconnected if the slot is gone.
ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind);

}  // namespace mirolta::host
