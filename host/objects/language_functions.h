// Members of the script language that the engine lacks: ScriptEngine and the functions of its
// version, CollectGarbage, and Date.prototype.getVarDate.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Call once, before any script runs.
void InstallLanguageFunctions(duk_context* engine);

}  // namespace mirolta::host
