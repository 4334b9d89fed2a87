#include "heap/allocation.h"

#include <atomic>
#include <cstdlib>

#include "mirolta/system.h"
#include "portable/test_hooks.h"

namespace mirolta::runtime {
namespace {

constexpr LONG kOff = -1;

// Allocations left before the failing one; negative while nothing is to fail.
std::atomic<LONG> allocations_left{kOff};
std::atomic<bool> has_failed{false};

// MustFail counts one allocation. Exactly one caller is told to fail, however many threads race.
bool MustFail() {
  LONG left = allocations_left.load(std::memory_order_relaxed);
  while (left >= 0) {
    if (!allocations_left.compare_exchange_weak(left, left - 1)) continue;
    if (left > 0) return false;
    has_failed.store(true);
    return true;
  }
  return false;
}

// malloc(0) may return null, which must mean failure.
size_t AtLeastOne(size_t size) {
  return size == 0 ? 1 : size;
}

}  // namespace

void* AllocateRuntime(size_t size) {
  return MustFail() ? nullptr : std::malloc(AtLeastOne(size));
}

void* ReallocateRuntime(void* memory, size_t size) {
  return MustFail() ? nullptr : std::realloc(memory, AtLeastOne(size));
}

void FreeRuntime(void* memory) {
  std::free(memory);
}

}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" {

void mirolta::MiroltaFailAllocationAfter(LONG count) {
  has_failed.store(false);
  allocations_left.store(count < 0 ? kOff : count);
}

bool mirolta::MiroltaAllocationHasFailed() {
  return has_failed.load();
}
}

extern "C" {

LPVOID CoTaskMemAlloc(SIZE_T size) {
  return AllocateRuntime(size);
}

// As on the platform, a null block is allocated, and size 0 frees a block.
LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size) {
  if (memory != nullptr && size == 0) {
    FreeRuntime(memory);
    return nullptr;
  }
  return ReallocateRuntime(memory, size);
}

void CoTaskMemFree(LPVOID memory) {
  FreeRuntime(memory);
}
}
