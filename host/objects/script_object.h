// A script object as automation sees it: an IDispatch whose default value is what the script's own
// conversion gives (valueOf, then toString), whose named members are the object's properties, and
// which can be called if it is a function.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Ties script objects that automation holds to their engine, which may end before them.
struct ScriptLink;

// Makes the link of a context, null if memory is short. CutLink is called before the engine ends:
// from then on the objects fail every call.
ScriptLink* MakeLink(duk_context* engine);
void CutLink(ScriptLink* link);

// WrapScriptObject returns an automation object for the script object at `index`, null if memory is
// short. The script object lives as long as it.
IDispatch* WrapScriptObject(duk_context* engine, duk_idx_t index);
// PushWrappedObject pushes the script object that `object` stands for; false if it stands for none.
bool PushWrappedObject(duk_context* engine, IUnknown* object);

// An error that a script object threw through an automation call is kept meanwhile, so that the
// script that made the call gets that very error. TakeScriptError pushes it if the call failed with
// the status it gave rise to; it forgets it in either case.
bool TakeScriptError(duk_context* engine, HRESULT status);
void ForgetScriptError(duk_context* engine);

}  // namespace mirolta::host
