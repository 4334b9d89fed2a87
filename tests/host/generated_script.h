// Scripts made from the grammar of ES5, with spaces, comments and line breaks wherever they may be,
// and assignments to calls in them; and the same scripts as the host compiles them. That is written
// down while the script is made, from the grammar, and not read out of its text.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace mirolta::test {

struct GeneratedScript {
  std::string script;
  std::string rewritten;
  int call_assignments = 0;
};

// MakeScript makes a script by choices: choose(n) answers 0..n-1. Answers of 0 lead to its end.
// What it makes compiles once it is rewritten; it may not be run, since its loops do not end.
GeneratedScript MakeScript(const std::function<uint32_t(uint32_t)>& choose);

}  // namespace mirolta::test
