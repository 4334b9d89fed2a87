// Automation arrays in scripts. A byte array of one dimension is a Uint8Array that remembers its
// lower bound; any other array is an opaque value that can be passed on and that VBArray reads.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushArray pushes the script's value of an array.
void PushArray(duk_context* engine, const VARIANT& array);
// The lower bound that a Uint8Array had as an automation array; 0 for one made by the script.
LONG LowerBoundAt(duk_context* engine, duk_idx_t index);
// PushArrayOf pushes the array value that a VBArray at `index` reads; false if there is none there.
bool PushArrayOf(duk_context* engine, duk_idx_t index);
// InstallVbArray gives the script VBArray: dimensions, lbound, ubound, getItem and toArray.
void InstallVbArray(duk_context* engine);

}  // namespace mirolta::host
