// Allocations of the runtime that fail on demand, which only the portable runtime has: where
// kRuntimeFailsOnDemand is false, tests skip what needs such a failure.
#pragma once

#include <gtest/gtest.h>

#include <string>

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

namespace mirolta::test {

// FailEachAllocation runs call() with its first allocation failing, then its second, until none
// fails; after each run check(status, failed). Returns the number of failures.
template <typename Call, typename Check>
LONG FailEachAllocation(Call call, Check check) {
  for (LONG count = 0; count < 10000; ++count) {
    SCOPED_TRACE("allocation " + std::to_string(count));
    MiroltaFailAllocationAfter(count);
    const auto status = call();
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    check(status, failed);
    if (!failed) return count;
  }
  ADD_FAILURE() << "allocations never end";
  return 0;
}
// The same for a call that reports every failure.
template <typename Call>
LONG FailEachAllocation(Call call) {
  return FailEachAllocation(
      call, [](HRESULT status, bool failed) { EXPECT_EQ(status, failed ? E_OUTOFMEMORY : S_OK); });
}

}  // namespace mirolta::test
