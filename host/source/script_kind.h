// Files that are no scripts for this host.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

// RefusalOf returns why a file of this name and with these bytes does not run, and what does; "" if
// it may.
std::string RefusalOf(std::string_view path, std::string_view bytes);

}  // namespace mirolta::host
