// BSTRs of tests.
#pragma once

#include <string_view>

#include "owned_value.h"

namespace mirolta::test {

inline OwnedBstr Bstr(std::basic_string_view<OLECHAR> text) {
  return OwnedBstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

}  // namespace mirolta::test
