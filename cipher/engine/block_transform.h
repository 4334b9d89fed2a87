// A block cipher under a key, as the queues see it.
#pragma once

#include "platform.h"

namespace mirolta {

// BlockTransform transforms whole blocks, each by itself, with out apart from in. Without a key
// there is no run; block_size, a power of two, is always set. It borrows the schedule.
struct BlockTransform {
  void (*run)(const void* schedule, const uint8_t* in, uint8_t* out, uint32_t block_count);
  const void* schedule;
  uint32_t block_size;
};

// RunKernel is a BlockTransform's run for a schedule type and the kernels that take it.
template <typename Schedule, const auto& kKernels>
void RunKernel(const void* schedule, const uint8_t* in, uint8_t* out, uint32_t block_count) {
  CurrentKernel<kKernels>()(*static_cast<const Schedule*>(schedule), in, out, block_count);
}

}  // namespace mirolta
