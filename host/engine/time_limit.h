// The time limit of a script: WScript.Timeout.
#pragma once

#include "engine/script_context.h"

namespace mirolta::host {

// SetTimeLimit ends the process with status 1 and a message on standard error when it has run for
// `seconds` more, whatever it does; 0 removes the limit. Temporary files are removed.
void SetTimeLimit(ScriptContext* context, unsigned seconds);

}  // namespace mirolta::host
