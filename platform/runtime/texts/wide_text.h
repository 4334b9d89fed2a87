// 16-bit text: owned, viewed, compared.
#pragma once

#include <string_view>

#include "heap/runtime_array.h"
#include "mirolta/base_types.h"

namespace mirolta::runtime {

using WideText = RuntimeArray<WCHAR>;
using WideView = std::u16string_view;

inline WideView ViewOf(const WideText& text) {
  return {text.Data(), text.Size()};
}

// WideLength returns the number of characters before the terminator.
inline size_t WideLength(LPCWSTR text) {
  return WideView(text).size();
}

// EqualsIgnoringAsciiCase compares two texts; letters other than ASCII's have no case.
bool EqualsIgnoringAsciiCase(WideView a, WideView b);

}  // namespace mirolta::runtime
