// The functions that a script gets for the members of automation objects.
#pragma once

#include "engine/engine_api.h"
#include "objects/member_table.h"

namespace mirolta::host {

inline constexpr WORD kCallFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

// PushBoundFunction pushes a function that calls the member `id` of the object at `owner`.
void PushBoundFunction(duk_context* engine, duk_idx_t owner, DISPID id);

// PushSharedFunction pushes the function that calls a described member of its `this`, which has to
// be an object with the same type information. It creates the function at its first call.
// Errors: returns false and pushes nothing if there are too many; std::bad_alloc.
bool PushSharedFunction(duk_context* engine, Member* member);

// PushAssignmentFunction pushes a function that takes the arguments of an assignment to a call of
// the member `id` of the object at `owner` (call_assignment.h) and returns an object whose property
// `value` is the property with these arguments.
void PushAssignmentFunction(duk_context* engine, duk_idx_t owner, DISPID id);

// PushElements pushes the elements of the array at `list` and returns their number.
duk_idx_t PushElements(duk_context* engine, duk_idx_t list);

// Call once, before any script runs.
void InstallMemberFunctions(duk_context* engine);

}  // namespace mirolta::host
