// The global WScript: Echo, StdOut and StdErr, Arguments, ScriptName, ScriptFullName, CreateObject,
// Sleep, Quit, and the byte streams of stream_object.h. As on the platform, the letter case of its
// members does not matter.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// Call once, before any script runs; the context names the script and its arguments.
void InstallWScript(duk_context* engine);

// FlushOutput writes out what scripts printed; false if not all of it could be written.
bool FlushOutput();

}  // namespace mirolta::host
