// How this process uses the registry: operations that the platform does not have.
#pragma once

#include "mirolta/bool.h"
#include "mirolta/registry.h"

extern "C" {
// The registry consists of layers: the user's file, which is written, and the system-wide files,
// which are visible below it. A key has the values of the first layer in which it has any, and the
// subkeys of all. Deleting what only a lower layer has is ERROR_ACCESS_DENIED; setting a value
// makes the key's values the user's own.

// TRUE makes the user's layer a copy in memory, initially the file's content, or empty if the file
// is missing or cannot be read; nothing is written or read from then on. FALSE discards the copy
// and returns to the file.
// Errors: ERROR_OUTOFMEMORY; nothing is changed then.
MIROLTA_RUNTIME LONG MiroltaRegistryInMemory(BOOL in_memory);

// A batch: the changes that this thread makes between TRUE and FALSE, which nest, are collected.
// The thread sees them, others do not, and nothing is locked meanwhile. The last FALSE repeats them
// on the registry's current content and writes the result once, whole or not at all. Where others
// have changed the same, the batch prevails. A batch is discarded when its thread ends. Its thread
// sees the user's layer only: a registration neither depends on what others have registered
// system-wide nor is hindered by it.
// Errors: those of reading and writing the file; ERROR_INVALID_PARAMETER for FALSE without TRUE on
//         this thread.
MIROLTA_RUNTIME LONG MiroltaRegistryBatch(BOOL begin);

// Discards the batch of this thread, however deep it is nested: nothing is written.
MIROLTA_RUNTIME void MiroltaRegistryDiscard();

// Begins a batch that reads and writes the first system-wide file in place of the user's layer;
// MiroltaRegistryBatch(FALSE) ends it. A new file and its folders can be read by everybody.
// Errors: those of MiroltaRegistryBatch; ERROR_INVALID_PARAMETER within a batch of the user's
//         layer; ERROR_ACCESS_DENIED if MIROLTA_REGISTRY replaces all layers or the registry is in
//         memory.
MIROLTA_RUNTIME LONG MiroltaSystemRegistryBatch();

// For messages. The name of a layer's file, whose length is returned: 0 past the last layer, if it
// does not fit, and for a user's layer without a file. Layer 0 is the user's; the others follow in
// the order of look-up, whether the files exist or not.
MIROLTA_RUNTIME DWORD MiroltaRegistryFile(DWORD layer, LPWSTR file, DWORD capacity);
// The layer from which an open key has its values.
// Errors: ERROR_INVALID_HANDLE; ERROR_KEY_DELETED; those of reading the registry.
MIROLTA_RUNTIME LONG MiroltaRegistryLayer(HKEY key, DWORD* layer);
// The layer that was last read without success, and the line at which its file was malformed
// (ERROR_BADDB), else 0.
MIROLTA_RUNTIME DWORD MiroltaRegistryFailedLayer();
MIROLTA_RUNTIME DWORD MiroltaRegistryBadLine();
}
