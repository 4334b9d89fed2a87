// Automation arrays in scripts. A byte array of one dimension is a Uint8Array that keeps its lower
// bound; any other array is an opaque value, which can be passed on and read through VBArray.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushArray pushes the script value of an array, which the caller keeps.
// Errors: throws the status of reading or copying the array.
void PushArray(duk_context* engine, const VARIANT& array);
// LowerBoundAt returns the lower bound that the Uint8Array at `index` had as an automation array, 0
// for one that the script made.
LONG LowerBoundAt(duk_context* engine, duk_idx_t index);
// CanBeLent returns whether the value at `index` is a byte array that may be an argument without a copy
// (byte_loan.h): it has bytes and the lower bound 0. Never throws.
bool CanBeLent(duk_context* engine, duk_idx_t index);
// PushArrayOf pushes the array that the VBArray at `index` wraps.
// Errors: returns false and pushes nothing if there is no VBArray.
bool PushArrayOf(duk_context* engine, duk_idx_t index);
// InstallVbArray defines VBArray: dimensions, lbound, ubound, getItem and toArray.
void InstallVbArray(duk_context* engine);

}  // namespace mirolta::host
