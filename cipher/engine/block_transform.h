// A block cipher with a key, as the queues use it.
#pragma once

#include <cstdint>

namespace mirolta {

// BlockTransform transforms whole blocks, each independently (ECB). run is null without a key;
// block_size, a power of two, is always set. The schedule is the engine's.
// Shapes: in[block_size * block_count], out[block_size * block_count].
// Alias:  out is in, or does not overlap it.
struct BlockTransform {
  void (*run)(const void* schedule, const uint8_t* in, uint8_t* out, uint32_t block_count);
  const void* schedule;
  uint32_t block_size;
};

}  // namespace mirolta
