// help(object) at the prompt.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallHelp defines the global function help. help(object) prints the members of an object, with
// their help texts if it is an automation object; help("ProgID") describes a class; help() explains
// the prompt.
void InstallHelp(duk_context* engine);

}  // namespace mirolta::host
