// Script objects that stand for a slot of the object table.
#pragma once

#include "engine_api.h"
#include "object_table.h"

namespace mirolta {

// AttachHandle makes the script object at `index` stand for the slot; the slot is freed when the
// engine drops the object.
void AttachHandle(duk_context* engine, duk_idx_t index, uint32_t number);
// HandleAt tells the slot of the value at `index`; false if it stands for none. Runs no script.
bool HandleAt(duk_context* engine, duk_idx_t index, uint32_t* number);
// SlotAt returns the slot of the value at `index` if it has that kind, else null.
ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind);

}  // namespace mirolta
