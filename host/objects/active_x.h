// new ActiveXObject(progId) and WScript.CreateObject(progId).
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallActiveX defines the global ActiveXObject, and CreateObject in the object on top of the
// stack.
void InstallActiveX(duk_context* engine);

}  // namespace mirolta::host
