// Arguments of members, written as text.
#pragma once

#include <string>
#include <vector>

#include "platform.h"
#include "test_values.h"

namespace mirolta::test {

using Text = std::basic_string<OLECHAR>;

std::string Plain(const OLECHAR* text);  // ASCII only
Text WideOf(const std::string& text);

// Arguments reads values from text, one a word:
//   b40      a byte array of 40 bytes (b0: without elements)      x0AE6  one of these bytes
//   t:AES    a text           d40  a text of 40 digits          h40  a text of 40 hexadecimal ones
//   i-1      a VT_I4          B1   a VT_BOOL                    m    an argument left out
//   S3000    a memory stream that holds 3000 bytes
//   N        a number object
class Arguments {
 public:
  explicit Arguments(const std::string& words);
  VARIANT* Get() { return values_.empty() ? nullptr : &values_[0]; }
  const VARIANT* Get() const { return values_.empty() ? nullptr : &values_[0]; }
  unsigned Count() const { return static_cast<unsigned>(values_.size()); }
  ~Arguments();
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

 private:
  std::vector<VARIANT> values_;
};

struct Member;

// One row a member with parameters, named as Member::Name does: ordinary arguments and large ones.
struct ArgumentRow {
  const char* member;
  const char* ordinary;
  const char* large;
};
const std::vector<ArgumentRow>& ArgumentRows();
// The words of a member's arguments; null if its row is missing.
const char* ArgumentsFor(const Member& member, bool large);

}  // namespace mirolta::test
