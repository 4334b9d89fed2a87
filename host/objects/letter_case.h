// String.prototype.toLowerCase and toUpperCase. The engine takes a hundred instructions for a character; the
// texts of digests and numbers are ASCII, and short.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Call once, before any script runs.
void InstallLetterCase(duk_context* engine);

}  // namespace mirolta::host
