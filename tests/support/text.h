// Text of tests.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::test {

using Text = std::basic_string<OLECHAR>;

inline Text TextOf(BSTR text) {
  return text == nullptr ? Text() : Text(text, SysStringLen(text));
}

}  // namespace mirolta::test
