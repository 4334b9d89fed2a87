#include "memory_watch.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

#include "searched_memory.h"

namespace {

// Stands before the bytes given out, in room that keeps their alignment.
struct alignas(std::max_align_t) BlockHeader {
  size_t size;
  BlockHeader* previous;
  BlockHeader* next;
};

struct Secret {
  unsigned char bytes[64];
  size_t size;
};

std::atomic<bool> failing{false};
std::atomic<bool> failing_once{false};
std::atomic<bool> has_failed{false};
std::atomic<long> allowed{0};
std::atomic<size_t> largest{SIZE_MAX};
void (*called)(void*) = nullptr;
void* called_context = nullptr;
long calls_after = 0;
std::atomic<long> allocations{0};
std::atomic<long> live{0};
std::atomic<size_t> live_bytes{0};
std::atomic<size_t> peak_bytes{0};
std::atomic<bool> watching{false};
std::atomic<int> freed{0};
std::atomic<int> freed_with_secret{0};
Secret secrets[16];
size_t secret_count = 0;

BlockHeader live_blocks = {0, &live_blocks, &live_blocks};
std::atomic_flag live_blocks_locked;

class LiveBlocksLock {
 public:
  LiveBlocksLock() {
    while (live_blocks_locked.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~LiveBlocksLock() { live_blocks_locked.clear(std::memory_order_release); }
};

void Forget() {
  if (watching) std::abort();
  secret_count = 0;
  freed = 0;
  freed_with_secret = 0;
}

void Add(const void* secret, size_t size) {
  if (secret_count == std::size(secrets) || size == 0 || size > sizeof secrets[0].bytes) {
    std::abort();
  }
  std::memcpy(secrets[secret_count].bytes, secret, size);
  secrets[secret_count++].size = size;
}

int SecretsIn(const BlockHeader* block) {
  const auto* const start = reinterpret_cast<const unsigned char*>(block + 1);
  const unsigned char* const end = start + block->size;
  mirolta::test::TakeAsWritten(start, block->size);
  int found = 0;
  for (size_t i = 0; i < secret_count; ++i) {
    const unsigned char* const bytes = secrets[i].bytes;
    if (std::search(start, end, bytes, bytes + secrets[i].size) != end) ++found;
  }
  return found;
}

void* Allocate(size_t size) {
  if (called != nullptr && calls_after-- == 0) {
    void (*const call)(void*) = called;
    called = nullptr;
    call(called_context);
  }
  ++allocations;
  if (failing && allowed-- <= 0) {
    has_failed = true;
    if (failing_once) failing = false;
    return nullptr;
  }
  if (size > largest) return nullptr;
  auto* const block = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
  if (block == nullptr) return nullptr;
  block->size = size;
  {
    const LiveBlocksLock lock;
    block->previous = &live_blocks;
    block->next = live_blocks.next;
    block->next->previous = block;
    live_blocks.next = block;
  }
  ++live;
  const size_t bytes = live_bytes += size;
  size_t peak = peak_bytes;
  while (bytes > peak && !peak_bytes.compare_exchange_weak(peak, bytes)) {
  }
  // What the memory held before is not this block's.
  if (watching) std::memset(block + 1, 0xA5, size);
  return block + 1;
}

void* AllocateOrThrow(size_t size) {
  void* block = Allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void Free(void* pointer) {
  if (pointer == nullptr) return;
  BlockHeader* const block = static_cast<BlockHeader*>(pointer) - 1;
  if (watching) {
    ++freed;
    if (SecretsIn(block) != 0) ++freed_with_secret;
  }
  {
    const LiveBlocksLock lock;
    block->previous->next = block->next;
    block->next->previous = block->previous;
  }
  --live;
  live_bytes -= block->size;
  std::free(block);
}

}  // namespace

void* operator new(size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* pointer) noexcept {
  Free(pointer);
}
void operator delete[](void* pointer) noexcept {
  Free(pointer);
}
void operator delete(void* pointer, size_t) noexcept {
  Free(pointer);
}
void operator delete[](void* pointer, size_t) noexcept {
  Free(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
  Free(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
  Free(pointer);
}

namespace mirolta::test {

WatchPeak::WatchPeak() : begin_(live_bytes) {
  peak_bytes = begin_;
}

size_t WatchPeak::Bytes() const {
  return peak_bytes - begin_;
}

FailAllocationsAfter::FailAllocationsAfter(long count) {
  allowed = count;
  has_failed = false;
  failing_once = false;
  failing = true;
}

FailAllocationsAfter::~FailAllocationsAfter() {
  failing = false;
}

FailOneAllocation::FailOneAllocation(long count) {
  allowed = count;
  has_failed = false;
  failing_once = true;
  failing = true;
}

FailOneAllocation::~FailOneAllocation() {
  failing = false;
}

LimitAllocations::LimitAllocations(size_t size) {
  largest = size;
}

LimitAllocations::~LimitAllocations() {
  largest = SIZE_MAX;
}

CallAtAllocation::CallAtAllocation(long count, void (*call)(void*), void* context) {
  calls_after = count;
  called_context = context;
  called = call;
}

CallAtAllocation::~CallAtAllocation() {
  called = nullptr;
}

bool CallAtAllocation::HasCalled() const {
  return called == nullptr;
}

bool AllocationHasFailed() {
  return has_failed;
}

WatchFreedMemory::WatchFreedMemory(const void* secret, size_t size) {
  Forget();
  Add(secret, size);
  watching = true;
}

WatchFreedMemory::WatchFreedMemory(const std::vector<std::vector<uint8_t>>& watched) {
  Forget();
  for (const std::vector<uint8_t>& secret : watched) Add(secret.data(), secret.size());
  watching = true;
}

WatchFreedMemory::~WatchFreedMemory() {
  watching = false;
}

int WatchFreedMemory::FreedWithSecret() const {
  return freed_with_secret;
}

int WatchFreedMemory::Freed() const {
  return freed;
}

int WatchFreedMemory::LiveSecrets() const {
  const LiveBlocksLock lock;
  int found = 0;
  for (const BlockHeader* block = live_blocks.next; block != &live_blocks; block = block->next) {
    found += SecretsIn(block);
  }
  return found;
}

long LiveAllocations() {
  return live;
}

long AllocationCount() {
  return allocations;
}

}  // namespace mirolta::test
