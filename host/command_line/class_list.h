// mirolta-host --list: the classes that scripts can create.
#pragma once

#include <stdio.h>

namespace mirolta::host {

// ListClasses writes the registered classes, grouped by module, each group with the registry in
// which it is found and whether the module's file exists; then the host's own classes. It returns
// the exit status of the command: 1, after a message, if the registry cannot be read.
// Errors: std::bad_alloc.
int ListClasses(FILE* output);

}  // namespace mirolta::host
