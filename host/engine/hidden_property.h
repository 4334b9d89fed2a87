// Properties that the host keeps in script objects under names that scripts cannot form. They are
// inherited as all properties are; what the host keeps concerns the object itself only.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushOwn pushes the property `key` that the object at `index` has itself; false and nothing pushed
// if it is no object or has none. Runs no script.
bool PushOwn(duk_context* engine, duk_idx_t index, const char* key);

}  // namespace mirolta::host
