// Automation objects in scripts. Members are resolved by GetIDsOfNames and called by Invoke; the
// host has no table of them.
//
// obj.Name            property get; a method, or a property that cannot be read without arguments,
//                     gives a function that calls it; an unknown name gives undefined
// obj.Name(args)      method call or property get with arguments; omitted trailing arguments are
//                     not passed
// obj.Name = value    property put, by reference first if the value is an object
// obj.Name(args) = v  property put with arguments (call_assignment.h)
// obj(args)           default member; where a primitive value is needed, obj reads it without
//                     arguments
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushDispatch pushes the script object for `object` and takes ownership of the caller's reference.
// Errors: throws the engine's errors and E_OUTOFMEMORY; the reference is then released.
void PushDispatch(duk_context* engine, IDispatch* object);
// Call once, before any script runs.
void InstallDispatchObjects(duk_context* engine);

}  // namespace mirolta::host
