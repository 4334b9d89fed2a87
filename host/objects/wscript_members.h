// The members of WScript that are about the host and the run: its names and version, its mode and
// time limit, the arguments, and objects that the host cannot reach.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallWScriptMembers defines them in the object on top of the stack, which has CreateObject.
// Call once, before any script runs.
void InstallWScriptMembers(duk_context* engine);

}  // namespace mirolta::host
