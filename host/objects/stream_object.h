// Byte streams in scripts. A stream object is an IStream for automation: it can be assigned to any
// member that takes an object.
//
// Read(n)                Uint8Array of the next n bytes (65536 if omitted). It has fewer only if a
//                        read of the stream returned none: at the end of a file, or when a filter
//                        has no more for now. Throws for more than 512 MB
// Write(bytes)           the number of bytes written
// Seek(position, origin) the new position; origin 0 start (if omitted), 1 current position, 2 end
// CopyTo(stream, n)      copies n bytes (all if omitted) and returns their number
// Size, Position         readable and assignable
// Commit()               syncs what was written to the disk
// Close()                moves a new file into place. Afterwards every use except Close and Discard
//                        fails with kStreamClosed, also as an argument. Automation objects keep
//                        their references, but calls on a closed new file fail
// Discard()              the same, but a new file is removed
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushStream pushes a stream object and takes ownership of the caller's reference.
// Errors: throws the engine's errors and E_OUTOFMEMORY; the reference is then released.
void PushStream(duk_context* engine, IStream* stream);
// InstallStreams defines OpenFile(path, mode, isPrivate), IsSameFile(a, b), MemoryStream(bytes) and
// StreamOf(object) in the object on top of the stack. StreamOf returns the IStream of an automation
// object.
void InstallStreams(duk_context* engine);

}  // namespace mirolta::host
