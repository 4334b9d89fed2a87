// WScript.Shell's collection of the user's and the system's folders.
#pragma once

#include "classes/host_object.h"

namespace mirolta::host {

extern const HostClass kSpecialFoldersClass;
// Errors: throws std::bad_alloc.
HostObject* NewSpecialFolders();

}  // namespace mirolta::host
