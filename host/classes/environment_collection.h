// The variables of the process's environment, and WScript.Shell's collection of them.
//
// Names are found in any letter case, as on the platform, if none has the case given.
#pragma once

#include <string>

#include "classes/host_object.h"

namespace mirolta::host {

// FindVariable returns the value of a variable, null if there is none. It is valid until the
// environment changes.
const char* FindVariable(const std::string& name);

extern const HostClass kEnvironmentClass;
// The collection of the process's variables.
// Errors: throws std::bad_alloc.
HostObject* NewEnvironmentCollection();

}  // namespace mirolta::host
