// Reader of files of published test vectors: comment lines (#), sections ([name]), fields (name =
// value); the fields between two empty lines or sections are one case.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"

namespace mirolta::test {

// VectorCase remembers which of its fields were read. Reading one that it lacks, or that has
// another form, throws.
class VectorCase {
 public:
  std::string section;  // without brackets; empty before the first
  int line = 0;         // of its first field

  // False if the field is there already.
  bool Add(const std::string& name, const std::string& value) {
    return fields_.emplace(name, Field{value}).second;
  }
  bool IsEmpty() const { return fields_.empty(); }
  bool Has(const std::string& name) const { return fields_.count(name) != 0; }
  const std::string& Text(const std::string& name) const {
    const auto found = fields_.find(name);
    if (found == fields_.end()) {
      throw std::runtime_error("line " + std::to_string(line) + ": no field " + name);
    }
    found->second.is_read = true;
    return found->second.value;
  }
  test::Bytes Bytes(const std::string& name) const { return BytesOfHex(Text(name)); }
  unsigned long Number(const std::string& name) const {
    size_t used = 0;
    const unsigned long number = std::stoul(Text(name), &used);
    if (used != Text(name).size()) throw std::runtime_error(name + " is not a number");
    return number;
  }
  // The name of a field that nobody has read; empty if there is none.
  std::string UnreadField() const {
    for (const auto& [name, field] : fields_) {
      if (!field.is_read) return name;
    }
    return {};
  }

 private:
  struct Field {
    std::string value;
    mutable bool is_read = false;
  };
  std::map<std::string, Field> fields_;
};

// ReadVectors throws for a line that it does not understand, a field that is not among the known
// ones or stands twice in a case, and a file without cases.
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
    if (current.IsEmpty()) return;
    cases.push_back(current);
    const std::string section = current.section;
    current = {};
    current.section = section;
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
    if (current.IsEmpty()) current.line = line;
    if (!current.Add(field, trimmed(std::string_view(text).substr(equals + 1)))) {
      fail("field " + field + " twice");
    }
  }
  close();
  if (cases.empty()) throw std::runtime_error(name + ": no cases");
  return cases;
}

// CheckVectors reads cases and runs check(case) for each. Besides what ReadVectors throws for, a
// field that a check leaves unread throws; failures name file, section and line.
template <typename Check>
void CheckVectors(std::istream& in, const std::string& name,
                  std::initializer_list<std::string_view> known, const Check& check) {
  for (const VectorCase& one : ReadVectors(in, name, known)) {
    const std::string place = name + ":" + std::to_string(one.line) + " [" + one.section + "]";
    SCOPED_TRACE(place);
    check(one);
    const std::string unread = one.UnreadField();
    if (!unread.empty()) throw std::runtime_error(place + ": field " + unread + " is not read");
  }
}

template <typename Check>
void CheckVectorFile(const std::string& path, std::initializer_list<std::string_view> known,
                     const Check& check) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error(path + ": cannot be read");
  CheckVectors(in, path, known, check);
}

}  // namespace mirolta::test
