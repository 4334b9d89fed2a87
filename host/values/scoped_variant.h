// The owner of an automation value. The host links the platform only, so it cannot use the module's
// OwnedVariant, which also wipes: the host keeps no secrets of its own.
#pragma once

#include "platform.h"

namespace mirolta::host {

// A VARIANT that is cleared at the end of its scope.
struct ScopedVariant : VARIANT {
  ScopedVariant() { VariantInit(this); }
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ~ScopedVariant() { VariantClear(this); }
};

}  // namespace mirolta::host
