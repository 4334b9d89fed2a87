// Date, which reads the platform's forms of dates beside those of the engine.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallDateClass replaces Date by a constructor with the same prototype, and Date.parse. The value
// kept as "Date" stays the engine's constructor.
// Call once, before any script runs.
void InstallDateClass(duk_context* engine);

}  // namespace mirolta::host
