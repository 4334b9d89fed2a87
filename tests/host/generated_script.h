// Random scripts generated from the grammar of ES5, with white space, comments and line breaks
// wherever they are allowed, and with assignments to calls; and what the host must rewrite them to.
// The generator writes both from the grammar, without parsing the script.
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

// MakeScript generates a script by choices: choose(n) returns 0..n-1. If it always returns 0, the
// script ends. The rewritten script compiles; do not run it, since its loops are endless.
GeneratedScript MakeScript(const std::function<uint32_t(uint32_t)>& choose);

}  // namespace mirolta::test
