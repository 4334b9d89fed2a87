// The automation side of a script object: an IDispatch whose default value is the object's
// primitive value (valueOf, then toString), whose members are the object's properties, and which
// can be called if the object is a function.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Links the script objects that automation holds to their engine, which may end before them.
struct ScriptLink;
struct ScriptContext;

// MakeLink creates the link of an engine and puts it into the engine's context, null if memory runs out. CutLink must
// be called before the engine ends; the objects then fail every call with kDisconnected.
// Errors: the engine's.
void MakeLink(duk_context* engine);
void CutLink(ScriptLink* link);

// WrapScriptObject returns the automation object for the script object at `index`, with a reference,
// and keeps the script object alive. While it lives, the script object has no other.
// Errors: null if memory runs out; the engine's.
IDispatch* WrapScriptObject(duk_context* engine, duk_idx_t index);
// IsWrappedObject returns whether `object` is the automation object of a script object, of this engine or another.
bool IsWrappedObject(IUnknown* object);
// PushWrappedObject pushes the script object that `object` wraps.
// Errors: returns false and pushes nothing if it wraps none of this engine.
bool PushWrappedObject(duk_context* engine, IUnknown* object);

// The host keeps the value that a script object throws during an automation call, so that the
// script that made the call gets the same value. TakeScriptError pushes it if the call failed with
// the status that was reported for it, else returns false; either way the value is forgotten.
bool TakeScriptError(duk_context* engine, HRESULT status);
void ForgetScriptError(duk_context* engine);
bool HasScriptError(const ScriptContext& context);

}  // namespace mirolta::host
