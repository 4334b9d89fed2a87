// One run of one script.
#pragma once

#include <string>
#include <vector>

namespace mirolta {

// RunScript runs a script file with its arguments and returns the host's exit status: 0, or 1 with a
// report on standard error for a script that cannot be read or compiled and for an uncaught error.
// WScript.Quit does not return.
int RunScript(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace mirolta
