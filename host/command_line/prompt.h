// The prompt: runs commands as they are typed.
#pragma once

#include "engine/script_engine.h"

namespace mirolta::host {

// The name of an entry in reports of errors.
inline constexpr char kPromptName[] = "prompt";

// InstallPrompt defines help(object) and catches Ctrl-C. Call once, for a started engine, before any
// command or script runs.
void InstallPrompt(ScriptEngine* engine);

// RunPrompt reads commands from standard input until it ends, runs each and prints its result or
// its error. The variable _ is the last result that is not undefined.
// Errors: false, with a message on standard error, if standard input cannot be read; what was typed
//         of the command then is not run. std::bad_alloc.
bool RunPrompt(ScriptEngine* engine);

}  // namespace mirolta::host
