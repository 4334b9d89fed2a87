// Whose files a process takes settings and code from, by the rules that programs for secure logins
// apply to theirs.
#pragma once

#include <sys/stat.h>

#include "heap/runtime_array.h"
#include "portable/status.h"

namespace mirolta::runtime {

// HasBorrowedRights tells whether the process has rights that its caller does not have, as a
// set-user-id program does: nothing that the caller names is then to be trusted.
bool HasBorrowedRights();

// IsTrusted tells whether only root and the user as whom the process acts can change the file.
bool IsTrusted(const struct stat& facts);

// ResolveTrusted sets the empty *resolved to the file's real name, terminated, if nobody but these
// can change the file or any folder on the way to it.
// Errors: CO_E_DLLNOTFOUND if there is no such file; E_ACCESSDENIED for a name that is not absolute
// and for what others can change; E_OUTOFMEMORY.
HRESULT ResolveTrusted(const char* file, RuntimeArray<char>* resolved);

}  // namespace mirolta::runtime
