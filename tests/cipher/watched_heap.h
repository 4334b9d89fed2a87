// A heap for one test program: allocations can be made to fail, and freed memory is searched.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

struct WatchedHeap {
  // Larger allocations fail.
  size_t largest_allocation = SIZE_MAX;
  // Bit n: the n-th allocation from now on fails.
  uint32_t failing_allocations = 0;
  size_t allocation_count = 0;
  // Watched patterns found in memory that was freed.
  size_t leaks = 0;
};
extern WatchedHeap watched_heap;

constexpr size_t kPatternSize = 8;

// Watch adds bytes[kPatternSize] to the patterns; there is room for 16.
void Watch(const void* bytes);
// StopWatching forgets all patterns and leaks.
void StopWatching();
// LivePatterns returns how often patterns are in memory that is allocated, each once a block.
size_t LivePatterns();

}  // namespace mirolta
