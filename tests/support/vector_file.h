// Reader of published test-vector files: comment lines (#), sections ([name]), fields (name =
// value); the fields between two empty lines or sections are one case.
#pragma once

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mirolta::test {

// BytesOfHex throws for text that is not whole bytes in hexadecimal.
inline std::vector<uint8_t> BytesOfHex(std::string_view hex) {
  const auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw std::runtime_error("not hexadecimal");
  };
  if (hex.size() % 2 != 0) throw std::runtime_error("half a byte");
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(nibble(hex[i]) << 4 | nibble(hex[i + 1])));
  }
  return bytes;
}

struct VectorCase {
  std::string section;  // without brackets; empty before the first
  int line = 0;         // of its first field
  std::map<std::string, std::string> fields;

  bool Has(const std::string& name) const { return fields.count(name) != 0; }
  const std::string& Text(const std::string& name) const {
    const auto found = fields.find(name);
    if (found == fields.end()) {
      throw std::runtime_error("line " + std::to_string(line) + ": no field " + name);
    }
    return found->second;
  }
  std::vector<uint8_t> Bytes(const std::string& name) const { return BytesOfHex(Text(name)); }
  unsigned long Number(const std::string& name) const {
    size_t used = 0;
    const unsigned long number = std::stoul(Text(name), &used);
    if (used != Text(name).size()) throw std::runtime_error(name + " is not a number");
    return number;
  }
};

// ReadVectors throws for a file that cannot be read, a line it does not understand, a field that is
// not among the known ones or stands twice in a case, and a file without cases.
inline std::vector<VectorCase> ReadVectors(std::istream& in, const std::string& name,
                                           std::initializer_list<std::string_view> known) {
  const auto trimmed = [](std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == text.npos) return std::string();
    return std::string(text.substr(first, text.find_last_not_of(" \t\r") - first + 1));
  };
  std::vector<VectorCase> cases;
  VectorCase current;
  const auto close = [&] {
    if (!current.fields.empty()) cases.push_back(current);
    current.fields.clear();
  };
  std::string text;
  for (int line = 1; std::getline(in, text); ++line) {
    const auto fail = [&](const std::string& why) -> void {
      throw std::runtime_error(name + ":" + std::to_string(line) + ": " + why);
    };
    text = trimmed(text);
    if (!text.empty() && text[0] == '#') continue;
    if (text.empty()) {
      close();
      continue;
    }
    if (text.front() == '[') {
      if (text.back() != ']') fail("section without end");
      close();
      current.section = trimmed(text.substr(1, text.size() - 2));
      continue;
    }
    const size_t equals = text.find('=');
    if (equals == text.npos) fail("neither field nor section");
    const std::string field = trimmed(std::string_view(text).substr(0, equals));
    bool is_known = false;
    for (const std::string_view one : known) is_known = is_known || one == field;
    if (!is_known) fail("unknown field " + field);
    if (current.fields.empty()) current.line = line;
    if (!current.fields.emplace(field, trimmed(std::string_view(text).substr(equals + 1))).second) {
      fail("field " + field + " twice");
    }
  }
  close();
  if (cases.empty()) throw std::runtime_error(name + ": no cases");
  return cases;
}

inline std::vector<VectorCase> ReadVectorFile(const std::string& path,
                                              std::initializer_list<std::string_view> known) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error(path + ": cannot be read");
  return ReadVectors(in, path, known);
}

}  // namespace mirolta::test
