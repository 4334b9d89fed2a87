// The registry's files below the user's, which are read only: the system-wide ones.
#pragma once

#include "registry/registry_tree.h"

namespace mirolta::runtime {

// ReadLowerRegistries returns the content of the lower files as one tree, which the next call may
// replace, null if there are none: a key has the values of the first file that gives it any, and the
// subkeys of all. Layer n is the n-th lower file, from 1. Files that do not exist or may not be read
// are skipped; files that have not changed since the last call are not read again. The caller holds
// the registry's lock.
// Errors: those of LoadRegistryFile, with the layer and the malformed line; the next call tries
//         again.
// Source: XDG Base Directory Specification 0.8, on files that may not be read.
LONG ReadLowerRegistries(RegistryKey** root, DWORD* failed_layer, DWORD* bad_line);

}  // namespace mirolta::runtime
