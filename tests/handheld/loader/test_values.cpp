// What the owners of the tests' values call: the module's own function of this name is not linked here,
// and what tests own is no secret.
#include "owned_value.h"

namespace mirolta {

void WipeAndClear(VARIANT* value) noexcept {
  VariantClear(value);
}

void WipeAndFreeText(BSTR text) noexcept {
  SysFreeString(text);
}

}  // namespace mirolta
