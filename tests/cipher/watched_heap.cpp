#include "watched_heap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace mirolta {

WatchedHeap watched_heap;

namespace {

// Stands before the bytes given out.
struct alignas(16) BlockHeader {
  size_t size;
  BlockHeader* previous;
  BlockHeader* next;
};

BlockHeader live_blocks = {0, &live_blocks, &live_blocks};

constexpr size_t kMostPatterns = 16;
uint8_t patterns[kMostPatterns][kPatternSize];
size_t pattern_count = 0;

size_t PatternsIn(const void* bytes, size_t size) {
  const uint8_t* const start = static_cast<const uint8_t*>(bytes);
  const uint8_t* const end = start + size;
  size_t found = 0;
  for (size_t i = 0; i < pattern_count; ++i) {
    if (std::search(start, end, patterns[i], patterns[i] + kPatternSize) != end) ++found;
  }
  return found;
}

void* Allocate(size_t size) {
  ++watched_heap.allocation_count;
  const bool fails = (watched_heap.failing_allocations & 1) != 0;
  watched_heap.failing_allocations >>= 1;
  if (fails || size > watched_heap.largest_allocation) return nullptr;
  BlockHeader* const header = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
  if (header == nullptr) return nullptr;
  header->size = size;
  header->previous = &live_blocks;
  header->next = live_blocks.next;
  header->next->previous = header;
  live_blocks.next = header;
  // What the memory held before is not this block's.
  std::memset(header + 1, 0, size);
  return header + 1;
}

void Release(void* bytes) {
  if (bytes == nullptr) return;
  BlockHeader* const header = static_cast<BlockHeader*>(bytes) - 1;
  watched_heap.leaks += PatternsIn(bytes, header->size);
  header->previous->next = header->next;
  header->next->previous = header->previous;
  std::free(header);
}

}  // namespace

void Watch(const void* bytes) {
  if (pattern_count == kMostPatterns) std::abort();
  std::memcpy(patterns[pattern_count++], bytes, kPatternSize);
}

void StopWatching() {
  pattern_count = 0;
  watched_heap.leaks = 0;
}

size_t LivePatterns() {
  size_t found = 0;
  for (BlockHeader* block = live_blocks.next; block != &live_blocks; block = block->next) {
    found += PatternsIn(block + 1, block->size);
  }
  return found;
}

}  // namespace mirolta

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return mirolta::Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return mirolta::Allocate(size);
}
void* operator new(size_t size) {
  void* const bytes = mirolta::Allocate(size);
  if (bytes == nullptr) throw std::bad_alloc();
  return bytes;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* bytes) noexcept {
  mirolta::Release(bytes);
}
void operator delete[](void* bytes) noexcept {
  mirolta::Release(bytes);
}
void operator delete(void* bytes, size_t) noexcept {
  mirolta::Release(bytes);
}
void operator delete[](void* bytes, size_t) noexcept {
  mirolta::Release(bytes);
}
void operator delete(void* bytes, const std::nothrow_t&) noexcept {
  mirolta::Release(bytes);
}
void operator delete[](void* bytes, const std::nothrow_t&) noexcept {
  mirolta::Release(bytes);
}
