// WScript.Shell: environment, folders. What needs a desktop or other programs is refused.
#pragma once

#include "classes/host_object.h"

namespace mirolta::host {

extern const HostClass kShellClass;
// Errors: throws std::bad_alloc.
HostObject* NewShell();

}  // namespace mirolta::host
