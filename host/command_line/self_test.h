// mirolta-host --check: known answers of every algorithm, through the public classes.
#pragma once

#include <string_view>

namespace mirolta::host {

// examples/selftest.js
extern const std::string_view kSelfTestScript;

// RunSelfTest runs the script and returns its exit status, 1 if an answer is wrong.
// Errors: std::bad_alloc.
int RunSelfTest();

}  // namespace mirolta::host
