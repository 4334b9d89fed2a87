// What the programs of bounded proofs print and return.
#pragma once

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace mirolta::prove {

// WantsAll tells whether the program was started for its full form.
inline bool WantsAll(int argc, char** argv) {
  return argc > 1 && std::string_view(argv[1]) == "--full";
}

// Report prints what was tried, and how much of it was wrong. Returns whether that is as it must be:
// something was tried, and a planted fault was found, or nothing wrong without one.
inline bool Report(const char* name, uint64_t tried, const std::string& what, uint64_t wrong,
                   bool is_planted) {
  const bool holds = tried != 0 && (wrong != 0) == is_planted;
  std::printf("%s: %s, %" PRIu64 " %s, %" PRIu64 " wrong\n", holds ? "ok" : "FAILED", name, tried,
              what.c_str(), wrong);
  std::fflush(stdout);
  return holds;
}

}  // namespace mirolta::prove
