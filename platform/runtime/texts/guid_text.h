// A GUID as registry text: {HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH}.
#pragma once

#include "mirolta/system.h"

namespace mirolta::runtime {

constexpr INT kGuidTextLength = 38;

// GuidText: the text of a GUID with its terminator.
struct GuidText {
  explicit GuidText(REFGUID id) { StringFromGUID2(id, text, kGuidTextLength + 1); }
  WCHAR text[kGuidTextLength + 1];
};

}  // namespace mirolta::runtime
