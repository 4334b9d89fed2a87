// Byte streams in scripts. A stream object is an IStream for automation: it can be assigned to any
// member that takes an object.
//
// Read(n)                Uint8Array of the next n bytes (65536 if left out). Fewer only if a read of the
//                        stream gave none any more: the end of a file, or what a filter has for now;
//                        none at the end. Throws for more than 512 MB at once
// Write(bytes)           the number of bytes written
// Seek(position, origin) the new position; origin 0 start (if left out), 1 here, 2 end
// CopyTo(stream, n)      copies n bytes (all if left out) on and returns their number
// Size, Position         both can be assigned
// Commit()               returns once what was written is on the disk
// Close()                a file that was opened to be made takes its place. Afterwards every use but
//                        another Close or Discard fails with kStreamClosed, wherever the stream is
//                        used. Automation objects keep their hold, but cannot use such a file any more
// Discard()              the same, but a file that was opened to be made is dropped
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// PushStream pushes a stream object and takes over the caller's reference.
void PushStream(duk_context* engine, IStream* stream);
// InstallStreams adds OpenFile(path, mode, isPrivate), IsSameFile(a, b), MemoryStream(bytes) and
// StreamOf(object) to the object on top of the stack. StreamOf gives the stream that an automation
// object is.
void InstallStreams(duk_context* engine);

}  // namespace mirolta::host
