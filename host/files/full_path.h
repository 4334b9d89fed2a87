#pragma once

#include <string>

namespace mirolta::host {

// FullPath returns the absolute path of a file, symbolic links followed; "" if there is none.
std::string FullPath(const std::string& path);

}  // namespace mirolta::host
