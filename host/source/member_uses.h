// How a script uses the names of members: does it call them, read them, or both?
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace mirolta::host {

struct MemberUses {
  // In the script's encoding. Every occurrence of a name that is no call counts as a read, also in a
  // string, which may become a key.
  std::set<std::string, std::less<>> called;
  std::set<std::string, std::less<>> read;
  // The script calls or reads members by keys that it computes, x[key]() and x[key], or that have
  // escapes.
  bool calls_computed = false;
  bool reads_computed = false;
};

// FindMemberUses returns the uses in the text of a script, in case of doubt too many. Code that the
// script compiles when it runs is not seen, and names of more than 255 bytes are left out.
// Shapes: UTF-8, or the engine's form of text.
MemberUses FindMemberUses(std::string_view script);

}  // namespace mirolta::host
