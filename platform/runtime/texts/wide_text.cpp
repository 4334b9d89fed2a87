#include "texts/wide_text.h"

#include "texts/characters.h"

namespace mirolta::runtime {

bool EqualsIgnoringAsciiCase(WideView a, WideView b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  }
  return true;
}

}  // namespace mirolta::runtime
