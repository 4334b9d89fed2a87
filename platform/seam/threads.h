// Threads that share one piece of work.
#pragma once

#include <cstddef>

#include "small_stack.h"

namespace mirolta {

// Devices with little stack have one processor, and code for threads would do nothing there.
inline constexpr bool kHasThreads = !kSmallStack;

// The most threads that share work, so that its memory is bounded.
inline constexpr size_t kMostThreads = 16;

// UsableProcessors returns how many processors this process may use, from 1 to kMostThreads. Without
// kHasThreads it need not exist.
size_t UsableProcessors() noexcept;

// RunOnThreads calls function(context) on `count` threads at once, the caller's among them, and returns
// when all calls have returned. The caller's stack is its own to wipe; the others' are wiped. Without
// kHasThreads it need not exist.
// Shapes: count from 1 to kMostThreads
// Errors: none: where the system starts fewer threads there are fewer calls, at least the caller's.
void RunOnThreads(size_t count, void (*function)(void* context), void* context) noexcept;

}  // namespace mirolta
