// Completion of names at the prompt.
#pragma once

#include <string_view>

#include "command_line/line_reader.h"
#include "engine/engine_api.h"

namespace mirolta::host {

// CompleteName completes the name that ends `text`: a global variable or keyword, or after dots a
// member of the object that the names before it lead to. It runs no script, reads no property of an
// automation object and ignores letter case in the names of its members.
// Shapes: texts are in the system's form.
// Errors: no words after an error of the engine; std::bad_alloc.
Completions CompleteName(duk_context* engine, std::string_view text);

}  // namespace mirolta::host
