// Script files.
#pragma once

#include <string>

namespace mirolta::host {

// LoadScript reads a script file and prepares it for the compiler: it removes a byte order mark,
// blanks a first line that starts with #!, and rewrites assignments to calls (call_assignment.h).
// Shapes: the script is UTF-8, of at most 256 MB.
// Errors: false with a message in *problem if the file cannot be read.
bool LoadScript(const std::string& path, std::string* script, std::string* problem);

}  // namespace mirolta::host
