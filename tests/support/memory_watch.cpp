#include "memory_watch.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Before each block stands its size, in room that keeps the block's alignment.
constexpr size_t kPrefix = alignof(std::max_align_t) > sizeof(size_t) ? alignof(std::max_align_t)
                                                                      : sizeof(size_t);

std::atomic<bool> failing{false};
std::atomic<bool> failing_once{false};
std::atomic<bool> has_failed{false};
std::atomic<long> allowed{0};
void (*called)(void*) = nullptr;
void* called_context = nullptr;
long calls_after = 0;
std::atomic<long> live{0};
std::atomic<bool> watching{false};
std::atomic<int> freed{0};
std::atomic<int> freed_with_secret{0};
unsigned char secret_bytes[64];
size_t secret_size = 0;

void* Allocate(size_t size) {
  if (called != nullptr && calls_after-- == 0) {
    void (*const call)(void*) = called;
    called = nullptr;
    call(called_context);
  }
  if (failing && allowed-- <= 0) {
    has_failed = true;
    if (failing_once) failing = false;
    return nullptr;
  }
  char* block = static_cast<char*>(std::malloc(size + kPrefix));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &size, sizeof size);
  ++live;
  return block + kPrefix;
}

void* AllocateOrThrow(size_t size) {
  void* block = Allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void Free(void* pointer) {
  if (pointer == nullptr) return;
  char* block = static_cast<char*>(pointer) - kPrefix;
  if (watching) {
    ++freed;
    size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    for (size_t i = 0; i + secret_size <= size; ++i) {
      if (std::memcmp(block + kPrefix + i, secret_bytes, secret_size) == 0) {
        ++freed_with_secret;
        break;
      }
    }
  }
  --live;
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
  if (size > sizeof secret_bytes) std::abort();
  std::memcpy(secret_bytes, secret, size);
  secret_size = size;
  freed = 0;
  freed_with_secret = 0;
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

long LiveAllocations() {
  return live;
}

}  // namespace mirolta::test
