// The registry scripts as resources of type "REGISTRY"; the build makes the table from the files in
// registry_scripts.
#pragma once

#include "portable/module_resources.h"

namespace mirolta {

inline constexpr unsigned kRegistryScriptCount = 6;
extern const DataResource kRegistryScripts[kRegistryScriptCount];

}  // namespace mirolta
