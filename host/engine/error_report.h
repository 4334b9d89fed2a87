// The report of an uncaught error.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/engine_api.h"

namespace mirolta::host {

// A call that led to an error. Text is in the system's form.
struct CallFrame {
  std::string function;  // empty for the script itself and for functions without a name
  std::string file;
  int line = 0;
};

struct Calls {
  std::vector<CallFrame> frames;  // innermost first
  bool are_more = false;          // the engine keeps the innermost ten
};

// SplitCalls reads the engine's text of calls; those of native functions and of the host's own
// scripts are left out. `files` are names that may contain what separates the parts of the text.
Calls SplitCalls(std::string_view text, const std::vector<std::string>& files);

// LineWithMarker returns a line of source, cut around the column if it is long, and below it a
// marker; without a marker if the column is 0. Both lines are indented and end with a line break.
// Nothing is returned for a line without text or of more than 1 MB.
// Shapes: UTF-8; control characters become spaces.
std::string LineWithMarker(std::string_view line, int column);

// ReportUncaught writes the report of the value on top of the stack, which was thrown and not
// caught, to standard error: place, number, source and description, the line and the calls that led
// to it. `was_compiled` is false if the script itself did not compile. In batch mode it does nothing.
// Errors: std::bad_alloc, not the engine's.
void ReportUncaught(duk_context* engine, bool was_compiled);

}  // namespace mirolta::host
