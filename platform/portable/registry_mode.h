// How this process uses the registry: operations that the platform does not have.
#pragma once

#include "portable/registry.h"

extern "C" {
// TRUE makes the registry a copy in memory, initially the file's content, or empty if the file is
// missing or cannot be read; nothing is written from then on. FALSE discards the copy and returns
// to the file.
// Errors: ERROR_OUTOFMEMORY; nothing is changed then.
MIROLTA_RUNTIME LONG MiroltaRegistryInMemory(BOOL in_memory);

// A batch: the changes that this thread makes between TRUE and FALSE, which nest, are collected.
// The thread sees them, others do not, and nothing is locked meanwhile. The last FALSE repeats them
// on the registry's current content and writes the result once, whole or not at all. Where others
// have changed the same, the batch prevails. A batch is discarded when its thread ends.
// Errors: those of reading and writing the file; ERROR_INVALID_PARAMETER for FALSE without TRUE on
//         this thread.
MIROLTA_RUNTIME LONG MiroltaRegistryBatch(BOOL begin);

// For messages: the file's name, whose length is returned (0 if there is none or it does not fit),
// and the line at which the file was last malformed (ERROR_BADDB), else 0.
MIROLTA_RUNTIME DWORD MiroltaRegistryFile(LPWSTR file, DWORD capacity);
MIROLTA_RUNTIME DWORD MiroltaRegistryBadLine();
}
