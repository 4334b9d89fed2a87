// Which files a process trusts for settings and code.
#pragma once

#include <sys/stat.h>

#include "heap/runtime_array.h"
#include "mirolta/status.h"

namespace mirolta::runtime {

// HasBorrowedRights tells whether the process has more rights than its caller, as a set-user-id
// program does. Nothing that the caller names is then trusted.
// Source: getauxval(3), AT_SECURE.
bool HasBorrowedRights();

// IsTrusted tells whether only root and the effective user can change the file.
bool IsTrusted(const struct stat& facts);

// ResolveTrusted sets the empty *resolved to the real name of the file, terminated, if only root
// and the effective user can change the file and every folder on the way to it.
// Errors: CO_E_DLLNOTFOUND if there is no such file; E_ACCESSDENIED for a name that is not absolute
//         and for what others can change; E_OUTOFMEMORY.
HRESULT ResolveTrusted(const char* file, RuntimeArray<char>* resolved);

}  // namespace mirolta::runtime
