// Where the registry's files lie.
#pragma once

#include "heap/runtime_array.h"
#include "mirolta/status.h"

namespace mirolta::runtime {

// NameUserRegistry sets the empty *file to the terminated name of the user's file: the value of
// MIROLTA_REGISTRY, else mirolta/registry.reg in XDG_DATA_HOME or in .local/share of the home
// folder. A set-user-id process has none.
// Errors: ERROR_OUTOFMEMORY; ERROR_FILE_NOT_FOUND if there is none.
LONG NameUserRegistry(RuntimeArray<char>* file);

// NameSystemRegistry sets the empty *file to the terminated name of the system-wide file that
// programs write: the value of MIROLTA_SYSTEM_REGISTRY, else /etc/mirolta/registry.reg.
// Errors: ERROR_OUTOFMEMORY; ERROR_ACCESS_DENIED if MIROLTA_REGISTRY replaces all files.
LONG NameSystemRegistry(RuntimeArray<char>* file);

// NameLowerRegistries sets the empty *files to the names of the files below the user's, each
// terminated, in the order of look-up: the system-wide file, then mirolta/registry.reg in each
// absolute folder of XDG_DATA_DIRS, or of its default. There are none if MIROLTA_REGISTRY replaces
// all files. For a set-user-id process they are those without any variables.
// Errors: ERROR_OUTOFMEMORY.
// Source: XDG Base Directory Specification 0.8.
LONG NameLowerRegistries(RuntimeArray<char>* files);

}  // namespace mirolta::runtime
