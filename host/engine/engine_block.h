// The blocks of memory that the engine gets from the host. Each has a header, where the host keeps the number of
// the slot that belongs to the engine's object in the block: a handle (object_handle.h) is known by its address,
// and the end of its block is its own end.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace mirolta::host {

// Slots are numbered in the order of adding. Numbers are never reused: a stale one finds nothing.
using SlotNumber = uint64_t;
inline constexpr SlotNumber kNoSlot = 0;

// Stands before each block and keeps its alignment.
struct alignas(max_align_t) BlockHeader {
  SlotNumber slot;
  size_t size;
};

inline BlockHeader* HeaderOf(void* block) {
  return static_cast<BlockHeader*>(block) - 1;
}

// SlotOfBlock returns the number in the header of a block; kNoSlot for null. The engine's objects, strings and
// buffers have a block of their own, whose address is duk_get_heapptr's.
inline SlotNumber SlotOfBlock(void* block) {
  return block != nullptr ? HeaderOf(block)->slot : kNoSlot;
}

}  // namespace mirolta::host
