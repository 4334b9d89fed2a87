// What the heap of a program reports to trust_heap.cpp.
#pragma once

#include <cstddef>

namespace mirolta::test {

// A block was allocated.
void SeeAllocated();
// block[size] is about to be freed: its content is searched. The caller then overwrites it, so that a new
// block never shows what an older one held.
void SeeFreed(void* block, size_t size);

}  // namespace mirolta::test
