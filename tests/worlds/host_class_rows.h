// Every class of the host; the build makes the list from their sources (host_class_rows.py).
#pragma once

#include <span>

#include "classes/host_object.h"

namespace mirolta::host {

std::span<const HostClass* const> AllHostClasses();

}  // namespace mirolta::host
