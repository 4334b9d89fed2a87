// Sentences that say why an image was refused.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>

namespace mirolta::loader {

struct Hex {
  uint32_t number;
};

inline std::ostream& operator<<(std::ostream& out, Hex hex) {
  return out << "0x" << std::hex << std::uppercase << hex.number << std::dec << std::nouppercase;
}

// Fail writes the parts of a sentence to `problem` and returns false.
template <typename... Part>
bool Fail(std::string* problem, const Part&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  *problem = text.str();
  return false;
}

}  // namespace mirolta::loader
