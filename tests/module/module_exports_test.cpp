// The symbols that the module exports.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>

namespace mirolta::test {
namespace {

// The tool's output by lines; empty if it fails.
std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  char piece[512];
  size_t count = 0;
  while ((count = fread(piece, 1, sizeof piece, pipe)) > 0) output.append(piece, count);
  return pclose(pipe) == 0 ? output : std::string();
}

TEST(ModuleExportsTest, AreExactlyTheEntryPoints) {
  const std::string output =
      OutputOf("'" MIROLTA_NM "' --dynamic --defined-only --format=posix '" MIROLTA_MODULE "'");
  ASSERT_FALSE(output.empty());
  std::set<std::string> exports;
  std::istringstream lines(output);
  std::string line;
  while (std::getline(lines, line)) {
    const std::string name = line.substr(0, line.find(' '));
    // Symbols of a sanitizer are not the module's, nor those by which a linker marks the sections.
    if (name.rfind("__asan", 0) == 0 || name.rfind("__odr_asan", 0) == 0 ||
        name.rfind("__msan", 0) == 0)
      continue;
    if (name == "__bss_start" || name == "_edata" || name == "_end") continue;
    exports.insert(name);
  }
  EXPECT_EQ(exports, (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                            "DllRegisterServer", "DllUnregisterServer"}));
}

}  // namespace
}  // namespace mirolta::test
