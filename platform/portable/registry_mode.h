// How this process uses the registry, beyond what the platform offers.
#pragma once

#include "portable/registry.h"

extern "C" {
// With TRUE the registry lives in memory from now on: it starts as the file is, empty if there is
// none or it cannot be read, and nothing is written. FALSE goes back to the file and forgets.
// Errors: ERROR_OUTOFMEMORY, with nothing changed.
MIROLTA_RUNTIME LONG MiroltaRegistryInMemory(BOOL in_memory);

// Between TRUE and FALSE (they nest) the changes that this thread makes are collected: it sees
// them, nobody else does. Nothing is locked meanwhile. The last FALSE makes them all again on what
// the registry is by then, writes the result at once, whole or not at all, and returns whether that
// went well; where others have changed the same, the batch has the last word. A thread that ends
// within a batch gives it up.
// Errors: those of reading and writing the file; ERROR_INVALID_PARAMETER for FALSE without TRUE on
//         this thread.
MIROLTA_RUNTIME LONG MiroltaRegistryBatch(BOOL begin);

// For messages: the file's name, its length returned (0 if there is none or it does not fit), and
// the line at which the file was last found malformed (ERROR_BADDB), 0 if it was not.
MIROLTA_RUNTIME DWORD MiroltaRegistryFile(LPWSTR file, DWORD capacity);
MIROLTA_RUNTIME DWORD MiroltaRegistryBadLine();
}
