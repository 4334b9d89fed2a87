// Results as the prompt prints them.
//
// 42, "text", true, null    as in a script
// 3 bytes: 61 62 63         Uint8Array, ArrayBuffer; the first 256
// [HashObject]              automation object, by the name of its class
// [array 0..2, 0..3]        automation array, by its bounds
// [1, "a", { b: 2 }]        arrays and objects, three levels deep
// [function f], [stream], [TypeError: text]
#pragma once

#include <string>

#include "engine/engine_api.h"

namespace mirolta::host {

// PushResultText replaces the value on top of the stack by its text. Long texts are cut. Getters of
// the value's properties run.
// Errors: throws the engine's errors and those of getters.
void PushResultText(duk_context* engine);

// TypeName returns the name of the class of an automation object, in the system's form; "object" if
// the object does not tell.
// Errors: std::bad_alloc.
std::string TypeName(IDispatch* object);

}  // namespace mirolta::host
