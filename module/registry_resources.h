// The registry scripts as resources of type "REGISTRY", made from the rows of the class table.
#pragma once

#include "portable/module_resources.h"

namespace mirolta {

// One script for each class: it registers the rows of both threading models.
inline constexpr unsigned kRegistryScriptCount = 6;
extern const DataResource kRegistryScripts[kRegistryScriptCount];

}  // namespace mirolta
