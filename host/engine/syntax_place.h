// The place of a syntax error. The engine tells its line only, and that of the token after it at
// times.
#pragma once

#include <string>
#include <string_view>

#include "engine/engine_api.h"
#include "source/source_lines.h"

namespace mirolta::host {

struct SyntaxPlace {
  Place place;        // 0 if it was not found
  std::string token;  // the first that cannot be part of a script; empty at the end of the script
};

// FindSyntaxError finds the error of a script that does not compile, by compiling its beginnings:
// the offending token is the last of the shortest beginning that no text completes.
// Shapes: the script before its assignments are rewritten; `line` as the engine reported it.
// Errors: no place for scripts of more than 256 KB, if memory runs out, and if the search finds
//         another line; std::bad_alloc, not the engine's.
// Time:   about 30 compilations.
SyntaxPlace FindSyntaxError(duk_context* engine, std::string_view script, int line);

}  // namespace mirolta::host
