// Byte streams in scripts. A stream object is an IStream for automation: it can be assigned to any
// member that takes an object.
//
// Read(n)               Uint8Array of the next bytes: at most n (65536 if left out, never more than
//                       16 MB), fewer near the end, none at it; one Read of the stream
// Write(bytes)          the number of bytes written
// Seek(position, origin) the new position; origin 0 start (if left out), 1 here, 2 end
// CopyTo(stream, n)     copies n bytes (all if left out) on and returns their number
// Size, Position        both can be assigned
// Commit(), Close()     after Close every use but another Close fails with kStreamClosed, wherever the
//                       stream is used; automation objects keep their hold
#pragma once

#include "engine_api.h"

namespace mirolta {

// PushStream pushes a stream object and takes over the caller's reference.
void PushStream(duk_context* engine, IStream* stream);
// InstallStreams adds OpenFile(path, mode), MemoryStream(bytes) and StreamOf(object) to the object
// on top of the stack. StreamOf gives the stream that an automation object is.
void InstallStreams(duk_context* engine);

}  // namespace mirolta
