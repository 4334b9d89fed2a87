// The global WScript: Echo, StdIn, StdOut and StdErr, Arguments, ScriptName, ScriptFullName,
// CreateObject, Sleep, Quit, and the byte streams of stream_object.h. Member names are
// case-insensitive, as on the platform.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Call once, before any script runs; the context names the script and its arguments.
void InstallWScript(duk_context* engine);

// FlushOutput flushes standard output; false, with a message on standard error, if writing failed.
bool FlushOutput();

}  // namespace mirolta::host
