// A block cipher under a key, as the queues see it.
#pragma once

#include <cstdint>

namespace mirolta {

// BlockTransform transforms whole blocks, each by itself, with out apart from in. Without a key
// there is no run; block_size, a power of two, is always set. It borrows the schedule.
struct BlockTransform {
  void (*run)(const void* schedule, const uint8_t* in, uint8_t* out, uint32_t block_count);
  const void* schedule;
  uint32_t block_size;
};

}  // namespace mirolta
