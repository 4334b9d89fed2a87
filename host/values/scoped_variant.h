// The owner of an automation value. The host links the platform only, so it cannot use the module's
// OwnedVariant, which also wipes: the host keeps no secrets of its own.
#pragma once

#include "platform.h"

namespace mirolta::host {

// MayOwn returns false if a VARIANT of the type is a number, which VariantClear need not clear before it is
// overwritten or forgotten.
inline bool MayOwn(VARTYPE type) {
  return type > VT_DATE && type != VT_BOOL;
}

// A VARIANT that is cleared at the end of its scope.
struct ScopedVariant : VARIANT {
  ScopedVariant() : VARIANT{} {}
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ~ScopedVariant() {
    if (MayOwn(vt)) VariantClear(this);
  }
};

}  // namespace mirolta::host
