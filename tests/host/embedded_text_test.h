// The texts embedded for the test.
#pragma once

#include <string_view>

namespace mirolta::host {

extern const std::string_view kEveryByte;
extern const std::string_view kThisFile;
extern const std::string_view kNothing;

}  // namespace mirolta::host
