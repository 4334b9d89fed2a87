// Error and its kin, with the platform's constructor and members.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallErrorClasses gives Error, TypeError ... the constructor new Error([number,] [description])
// and the members number and description; errors of the engine get the platform's number. It keeps
// the engine's constructors by their names ("Error").
// Call once, before any script runs.
void InstallErrorClasses(duk_context* engine);

}  // namespace mirolta::host
