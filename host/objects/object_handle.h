// Handles: script objects that refer to a slot of the object table, by a number in the header of their
// block (engine_block.h). Only the object that a handle was attached to is one; objects that inherit
// from it, and proxies of it that a script creates, are not.
#pragma once

#include "engine/engine_api.h"
#include "objects/object_table.h"

namespace mirolta::host {

// MakeObject creates and pushes the script object of a slot; it attaches the handle and may wrap
// the object in a proxy.
using MakeObject = void (*)(duk_context* engine, SlotNumber number);

// PushSlotObject adds `value` to the object table, takes ownership of it, and pushes its script
// object. The slot is freed soon after the engine frees the object (ObjectTable::Drop).
// Errors: throws the engine's errors and E_OUTOFMEMORY; `value` is then cleared, or as a freed slot's.
void PushSlotObject(duk_context* engine, SlotKind kind, const VARIANT& value, MakeObject make);

// For MakeObject: AttachHandle makes the object on top of the stack a handle to the slot.
// Nothing may run a script before. AttachToProxy also replaces it by a proxy, which is a handle too; `handler` is
// the address of the proxy's handler.
void AttachHandle(duk_context* engine, SlotNumber number);
void AttachToProxy(duk_context* engine, SlotNumber number, void* handler);
// PushPlainObject is a MakeObject for an object without properties.
void PushPlainObject(duk_context* engine, SlotNumber number);

// ThrowIfClosed throws kStreamClosed if the value at `index` is a closed stream. Functions that
// accept no stream there call it before they report a type mismatch.
void ThrowIfClosed(duk_context* engine, duk_idx_t index);

// HandleAt returns true and the slot number if the value at `index` is a handle. The slot may have
// been freed. Runs no script.
bool HandleAt(duk_context* engine, duk_idx_t index, SlotNumber* number);
// SlotAt returns the slot of the handle at `index`, null if the value is no handle or the slot is
// of another kind.
// Errors: throws kDisconnected if the slot was freed.
ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind);

}  // namespace mirolta::host
