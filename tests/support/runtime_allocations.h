// Allocations of the runtime that fail on demand, which only the portable runtime has: where
// kRuntimeFailsOnDemand is false, tests skip what needs such a failure.
#pragma once

#include "platform.h"

#ifdef _WIN32
namespace mirolta {
inline constexpr bool kRuntimeFailsOnDemand = false;
inline void MiroltaFailAllocationAfter(LONG) {}
inline bool MiroltaAllocationHasFailed() {
  return false;
}
}  // namespace mirolta
#else
  #include "portable/test_hooks.h"
namespace mirolta {
inline constexpr bool kRuntimeFailsOnDemand = true;
}
#endif
