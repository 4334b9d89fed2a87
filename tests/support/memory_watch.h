// The test program's own operator new and delete: allocations that fail on demand, and a look at
// what freed memory still holds. Link memory_watch.cpp to use them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta::test {

// While it lives, the first `count` allocations succeed and all later ones fail.
class FailAllocationsAfter {
 public:
  explicit FailAllocationsAfter(long count);
  ~FailAllocationsAfter();
  FailAllocationsAfter(const FailAllocationsAfter&) = delete;
  FailAllocationsAfter& operator=(const FailAllocationsAfter&) = delete;
};

// While it lives, the first `count` allocations succeed, the next one fails, and all later ones
// succeed again.
class FailOneAllocation {
 public:
  explicit FailOneAllocation(long count);
  ~FailOneAllocation();
  FailOneAllocation(const FailOneAllocation&) = delete;
  FailOneAllocation& operator=(const FailOneAllocation&) = delete;
};

// While it lives, the allocation after the first `count` calls something before it succeeds: what
// another thread could do just then.
class CallAtAllocation {
 public:
  // `call` may allocate.
  CallAtAllocation(long count, void (*call)(void* context), void* context);
  ~CallAtAllocation();
  CallAtAllocation(const CallAtAllocation&) = delete;
  CallAtAllocation& operator=(const CallAtAllocation&) = delete;
  // False if there were fewer allocations.
  bool HasCalled() const;
};

// True if an allocation was made to fail since the last FailAllocationsAfter or FailOneAllocation
// began.
bool AllocationHasFailed();

// While it lives, counts blocks that are freed with the given bytes somewhere in them.
class WatchFreedMemory {
 public:
  // Shapes: secret[size], size <= 64; it is copied.
  WatchFreedMemory(const void* secret, size_t size);
  ~WatchFreedMemory();
  WatchFreedMemory(const WatchFreedMemory&) = delete;
  WatchFreedMemory& operator=(const WatchFreedMemory&) = delete;
  int FreedWithSecret() const;
  int Freed() const;
};

// The number of blocks allocated and not yet freed.
long LiveAllocations();

}  // namespace mirolta::test
