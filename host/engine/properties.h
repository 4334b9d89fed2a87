// Properties that the host defines in script objects. Some have names that scripts cannot form;
// like all properties they are inherited, but what the host keeps there belongs to the object
// itself.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushOwn pushes the object's own property `key`, not an inherited one. Runs no script.
// Errors: returns false and pushes nothing if `index` holds no object or the property is missing.
bool PushOwn(duk_context* engine, duk_idx_t index, const char* key);

// DefineHidden defines a property, which scripts can change but do not enumerate, of the object below
// the value on top of the stack, which it takes.
void DefineHidden(duk_context* engine, const char* name);

// DefineAccessor defines an accessor property of the object on top of the stack; `attributes` are
// DUK_DEFPROP_ flags beside those of getter and setter.
void DefineAccessor(duk_context* engine, const char* name, duk_c_function get, duk_c_function set,
                    duk_uint_t attributes);

}  // namespace mirolta::host
