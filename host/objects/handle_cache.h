// The slots of the handles that were looked up last, by the addresses of the engine's objects.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "objects/object_table.h"

namespace mirolta::host {

// The owner of the engine's memory has to call Forget for every block that is freed or moved: another object
// may get the address.
class HandleCache {
 public:
  // Find returns the slot number noted for the object, kNoSlot if none is kept. The slot may have been freed.
  SlotNumber Find(const void* object) const {
    const Row& row = rows_[IndexOf(object)];
    return row.object == object ? row.number : kNoSlot;
  }
  void Note(const void* object, SlotNumber number) { rows_[IndexOf(object)] = {object, number}; }
  void Forget(const void* block) {
    Row& row = rows_[IndexOf(block)];
    if (row.object == block) row = {};
  }

 private:
  struct Row {
    const void* object = nullptr;
    SlotNumber number = kNoSlot;
  };
  static constexpr size_t kRows = 64;

  // Blocks are at least that far apart.
  static size_t IndexOf(const void* object) {
    return reinterpret_cast<uintptr_t>(object) / alignof(max_align_t) % kRows;
  }

  Row rows_[kRows];
};

}  // namespace mirolta::host
