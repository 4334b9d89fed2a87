// The time limit of a script: //T and WScript.Timeout.
#pragma once

#include "engine/script_context.h"

namespace mirolta::host {

// SetTimeLimit ends the process with status 1 and a message on standard error when it has run for
// `seconds` more, whatever it does; 0 removes the limit. In batch mode there is no message.
// Errors: E_NOTIMPL at the prompt, which goes on for as long as it likes; std::bad_alloc.
[[nodiscard]] HRESULT SetTimeLimit(ScriptContext* context, unsigned seconds);

}  // namespace mirolta::host
