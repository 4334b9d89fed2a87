// Script files.
#pragma once

#include <string>

namespace mirolta::host {

// LoadScript reads a script file as the engine compiles it: UTF-8 without its byte order mark, a
// first line that starts with #! blanked, assignments to calls rewritten (call_assignment.h). False
// with *problem if the file cannot be read.
bool LoadScript(const std::string& path, std::string* script, std::string* problem);

}  // namespace mirolta::host
