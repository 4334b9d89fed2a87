// The count of references to a shared object.
#pragma once

#include "mirolta/system.h"

namespace mirolta::runtime {

// ReferenceCount starts at one, the creator's reference. Any thread may change it.
class ReferenceCount {
 public:
  // Both return the new count. The caller of Remove destroys the object at zero.
  ULONG Add() { return static_cast<ULONG>(InterlockedIncrement(&count_)); }
  ULONG Remove() { return static_cast<ULONG>(InterlockedDecrement(&count_)); }

 private:
  LONG volatile count_ = 1;
};

}  // namespace mirolta::runtime
