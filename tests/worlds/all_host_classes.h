// Every class of the host, those too that scripts cannot create (all_host_classes.py finds them).
#pragma once

#include <span>

#include "classes/host_object.h"

namespace mirolta::host {

std::span<const HostClass* const> AllHostClasses();

}  // namespace mirolta::host
