// Helpers of the tests of the runtime's system services: a temporary folder, a registry and 16-bit
// text.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "mirolta/bool.h"
#include "mirolta/runtime.h"
#include "temporary_folder.h"

namespace mirolta {

using test::TemporaryFolder;

// Registry files of a test lie in its folder.
class RegistryTest : public testing::Test {
 protected:
  RegistryTest() : file_(folder_.File("registry.reg")) {
    umask(022);  // files that others may write are refused
    setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
  }
  ~RegistryTest() override { unsetenv("MIROLTA_REGISTRY"); }

  // Makes the process read the file again, under a second name.
  void UseCopy() {
    std::filesystem::copy_file(file_, file_ + "2");
    setenv("MIROLTA_REGISTRY", (file_ + "2").c_str(), 1);
  }

  TemporaryFolder folder_;
  std::string file_;
};

inline std::string ReadFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void WriteFile(const std::string& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

inline std::u16string Wide(const std::string& ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

inline std::string Narrow(const std::u16string& wide) {
  std::string text;
  for (const char16_t c : wide) text += c < 0x80 ? static_cast<char>(c) : '?';
  return text;
}

}  // namespace mirolta
