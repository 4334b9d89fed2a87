// The owner of an automation value. The host links the platform only, so it cannot use the module's
// OwnedVariant, which also wipes: the host keeps no secrets of its own.
#pragma once

#include "platform.h"

namespace mirolta::host {

// ClearBeforeEnd releases what a VARIANT owns before it is overwritten or forgotten: numbers, the most of the
// values, own nothing and are left as they are.
inline void ClearBeforeEnd(VARIANT& value) {
  if (value.vt > VT_DATE && value.vt != VT_BOOL) VariantClear(&value);
}

// A VARIANT that is cleared at the end of its scope.
struct ScopedVariant : VARIANT {
  // clang's analyzer does not see that VARIANT{} sets the type.
  ScopedVariant() : VARIANT{} { vt = VT_EMPTY; }
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ~ScopedVariant() { ClearBeforeEnd(*this); }
};

}  // namespace mirolta::host
