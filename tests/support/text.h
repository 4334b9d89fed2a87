// Text of tests.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::test {

using Text = std::basic_string<OLECHAR>;

inline Text TextOf(BSTR text) {
  return text == nullptr ? Text() : Text(text, SysStringLen(text));
}
inline Text TextOf(const VARIANT& value) {
  return V_VT(&value) == VT_BSTR ? TextOf(value.bstrVal) : OLESTR("(no text)");
}

}  // namespace mirolta::test
