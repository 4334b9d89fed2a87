// Automation objects in scripts. Every member is found by GetIDsOfNames and reached by Invoke; the
// host has no table of members.
//
// obj.Name            property get; a method, or a property that cannot be read without arguments,
//                     gives a function that calls it; an unknown name gives undefined
// obj.Name(args)      method call or property get with arguments; arguments left out at the end are
//                     left out of the call
// obj.Name = value    property put, by reference first if the value is an object
// obj.Name(args) = v  property put with arguments (call_assignment.h)
// obj(args)           default member; obj where a value is needed reads it without arguments
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushDispatch pushes the script's object for `object` and takes over the caller's reference.
void PushDispatch(duk_context* engine, IDispatch* object);
// Call once, before any script runs.
void InstallDispatchObjects(duk_context* engine);

}  // namespace mirolta::host
