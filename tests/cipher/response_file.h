// Reader of the published response files: sections in brackets, fields, cases divided by COUNT.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "test_bytes.h"

namespace mirolta {

using VectorCase = std::map<std::string, Bytes>;

inline std::string Trimmed(const std::string& text) {
  const size_t start = text.find_first_not_of(" \t\r");
  if (start == std::string::npos) return {};
  return text.substr(start, text.find_last_not_of(" \t\r") - start + 1);
}

// ReadVectorCases returns all cases of a file. A line that is no known field, a case without
// plaintext, ciphertext or key, and a file without cases are test failures.
inline std::vector<VectorCase> ReadVectorCases(const std::string& path) {
  std::vector<VectorCase> cases;
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  std::string line;
  while (std::getline(file, line)) {
    line = Trimmed(line);
    if (line.empty() || line[0] == '#' || line == "[ENCRYPT]" || line == "[DECRYPT]") continue;
    const size_t equals = line.find('=');
    const std::string name = Trimmed(line.substr(0, equals));
    const std::string value = equals == std::string::npos ? "" : Trimmed(line.substr(equals + 1));
    if (name == "COUNT") {
      cases.emplace_back();
    } else if (name == "KEY" || name == "KEYs" || name == "KEY1" || name == "KEY2" ||
               name == "KEY3" || name == "PLAINTEXT" || name == "CIPHERTEXT") {
      EXPECT_FALSE(cases.empty()) << path << ": " << line;
      if (!cases.empty()) cases.back()[name] = FromHex(value);
    } else {
      ADD_FAILURE() << path << ": unknown field: " << line;
    }
  }
  EXPECT_FALSE(cases.empty()) << path << ": no cases";
  for (const VectorCase& one : cases) {
    EXPECT_EQ(one.count("PLAINTEXT"), 1u) << path;
    EXPECT_EQ(one.count("CIPHERTEXT"), 1u) << path;
    EXPECT_EQ(one.count("KEY") + one.count("KEYs") + one.count("KEY1"), 1u) << path;
    EXPECT_EQ(one.count("KEY1"), one.count("KEY2")) << path;
    EXPECT_EQ(one.count("KEY1"), one.count("KEY3")) << path;
  }
  return cases;
}

}  // namespace mirolta
