// What a thread of RunOnThreads runs.
#pragma once

#include <cstddef>

#include "wiped_work.h"

namespace mirolta {

// What the systems' defaults, often 8 MB, reserve would not fit a small address space many times.
inline constexpr size_t kThreadStackBytes = size_t{1} << 20;

struct ThreadCall {
  void (*function)(void* context);
  void* context;

  // Makes the call, and wipes what it left on the thread's stack and in its registers.
  void Run() const noexcept {
    auto work = [this]() -> HRESULT {
      function(context);
      return S_OK;
    };
    (void)RunWiped(work, StackUse::kDeep);
  }
};

}  // namespace mirolta
