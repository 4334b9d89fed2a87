// What the tests of memory that runs out share: which allocation fails, and the module around them.
#pragma once

#include <iostream>
#include <string>

#include "class_table.h"
#include "member_calls.h"
#include "memory_watch.h"
#include "module_state.h"
#include "portable/test_hooks.h"
#include "system_rules.h"
#include "trust_heap.h"
#include "trust_test.h"

namespace mirolta::test {

// Who refuses: operator new from the n-th allocation on, operator new the n-th time only, or the
// runtime the n-th time only.
enum class Failing { kNewFromThere, kNewOnce, kRuntimeOnce };
inline constexpr Failing kFailings[] = {Failing::kNewFromThere, Failing::kNewOnce,
                                        Failing::kRuntimeOnce};
inline const char* NameOf(Failing failing) {
  switch (failing) {
    case Failing::kNewFromThere:
      return "every operator new from the n-th on";
    case Failing::kNewOnce:
      return "the n-th operator new";
    default:
      return "the n-th allocation of the runtime";
  }
}

// Runs a call with its n-th allocation failing; true if there was such an allocation.
template <typename Work>
bool RunFailing(Failing failing, long n, Work call) {
  switch (failing) {
    case Failing::kNewFromThere: {
      const FailAllocationsAfter fail(n);
      call();
      return AllocationHasFailed();
    }
    case Failing::kNewOnce: {
      const FailOneAllocation fail(n);
      call();
      return AllocationHasFailed();
    }
    default:
      MiroltaFailAllocationAfter(static_cast<LONG>(n));
      call();
      const bool failed = MiroltaAllocationHasFailed();
      MiroltaFailAllocationAfter(-1);
      return failed;
  }
}

// Every allocation up to this one fails, then fewer and fewer: the generation of keys must end.
#ifdef MIROLTA_SLOW_BUILD
constexpr long kAllUpTo = 100;
#else
constexpr long kAllUpTo = 1000;
#endif
// Of calls that take long every allocation fails up to this one.
constexpr long kFirst = 4;
// The allocation that fails next.
inline long After(long n, long all_up_to) {
  return n < all_up_to ? n + 1 : n + n / (all_up_to == kFirst ? 1 : 4);
}

class AllocationTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_NO_FATAL_FAILURE(UseRegistryInMemory());
    ASSERT_EQ(DllRegisterServer(), S_OK);
  }
  static void TearDownTestSuite() {
    MiroltaRegistryInMemory(FALSE);
    std::cout << points << " allocations were made to fail\n";
  }
  void SetUp() override {
    // What is made once and kept: factories, type information, error slot.
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kReady);
      OwnedReference<ITypeInfo> info;
      ASSERT_EQ(subject.Dispatch()->GetTypeInfo(0, 0, info.Put()), S_OK);
    }
    SetErrorInfo(0, nullptr);
    locks_at_start = CurrentModule()->lock_count;
  }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(CurrentModule()->lock_count, locks_at_start);
  }

  // Runs attempt(failing, n) for every kind of failure and n = 0, 1, 2 ..., until it returns false:
  // nothing failed any more. A failed expectation ends the test's attempts.
  template <typename Attempt>
  static void FailEachAllocation(const std::string& what, const Attempt& attempt,
                                 long all_up_to = kAllUpTo) {
    if (HasFailure()) return;
    for (const Failing failing : kFailings) {
      bool failed = true;
      for (long n = 0; failed; n = After(n, all_up_to)) {
        failed = attempt(failing, n);
        if (HasFailure()) FAIL() << what << ", " << NameOf(failing) << ", n = " << n;
        points += failed ? 1 : 0;
      }
    }
  }

  static inline long points = 0;  // allocations that failed
  PlannedChance chance;
  LONG locks_at_start = 0;
};

}  // namespace mirolta::test
