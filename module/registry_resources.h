// The registry scripts as resources of type "REGISTRY"; the build makes the table from the files in
// registry_scripts.
#pragma once

#include "portable/module_resources.h"

namespace mirolta {

extern const DataResource kRegistryScripts[];
extern const unsigned kRegistryScriptCount;

}  // namespace mirolta
