// The test program's own operator new and delete: allocations that fail on demand, and a search of
// memory for secrets. Link memory_watch.cpp to use them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

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

// While it lives, allocations of more than `size` bytes fail.
class LimitAllocations {
 public:
  explicit LimitAllocations(size_t size);
  ~LimitAllocations();
  LimitAllocations(const LimitAllocations&) = delete;
  LimitAllocations& operator=(const LimitAllocations&) = delete;
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

// While it lives, searches blocks that are freed for secrets. One at a time.
class WatchFreedMemory {
 public:
  // Shapes: secret[size], size <= 64; it is copied.
  WatchFreedMemory(const void* secret, size_t size);
  // Shapes: at most 16 secrets; they outlive the watch, which would see them freed.
  explicit WatchFreedMemory(const std::vector<std::vector<uint8_t>>& secrets);
  ~WatchFreedMemory();
  WatchFreedMemory(const WatchFreedMemory&) = delete;
  WatchFreedMemory& operator=(const WatchFreedMemory&) = delete;
  // Blocks with a secret in them: each counts once.
  int FreedWithSecret() const;
  int Freed() const;
  // How often a block that is not yet freed holds a secret: a block counts once a secret.
  int LiveSecrets() const;
};

// The number of blocks allocated and not yet freed.
long LiveAllocations();

// While it lives, remembers how many more bytes than at its beginning were allocated at once. One at a time.
class WatchPeak {
 public:
  WatchPeak();
  WatchPeak(const WatchPeak&) = delete;
  WatchPeak& operator=(const WatchPeak&) = delete;
  size_t Bytes() const;

 private:
  size_t begin_;
};

// The number of allocations so far.
long AllocationCount();

}  // namespace mirolta::test
