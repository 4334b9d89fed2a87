// Where on its line a failing statement starts.
#pragma once

#include <string_view>

namespace mirolta::host {

// StatementColumn returns the column, from 1 and in characters, of the only statement that can fail
// on a line, or of the part of a longer statement that the line starts with; 0 if there may be
// several.
// Shapes: a script that compiles, in UTF-8.
int StatementColumn(std::string_view script, int line);

}  // namespace mirolta::host
