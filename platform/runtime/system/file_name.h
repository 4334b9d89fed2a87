// File names: joined, and followed through symbolic links.
#pragma once

#include "heap/runtime_array.h"
#include "mirolta/status.h"

namespace mirolta::runtime {

// JoinFileName appends the two texts and a terminator.
// Errors: false if memory is short.
[[nodiscard]] bool JoinFileName(RuntimeArray<char>* out, const char* first, const char* second);

// FollowLinks sets the empty *target to the terminated name of the file that `file` leads to, which
// need not exist.
// Errors: ERROR_OUTOFMEMORY; ERROR_ACCESS_DENIED; ERROR_CANTWRITE for more than 40 links, a name
//         that is too long, and other failures to read a link.
LONG FollowLinks(const char* file, RuntimeArray<char>* target);

}  // namespace mirolta::runtime
