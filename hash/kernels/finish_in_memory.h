// The end of a digest, padded in memory, for any compression function.
#pragma once

#include "hash_kernels.h"

namespace mirolta {

// MemoryFinish: a digest's compression function, words of state, and byte order of the words and of
// the bit length.
struct MemoryFinish {
  CompressBlocks compress;
  uint32_t word_count;
  bool is_big_endian;
};

// FinishInMemory pads block, absorbs it and writes the digest, as a FinishDigest kernel does.
// Source: RFC 1321, 3.1, 3.2 and 3.5; FIPS 180-2, 5.1.1.
void FinishInMemory(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                    uint8_t* digest, const MemoryFinish& method);

// The same as a FinishDigest kernel.
template <CompressKernel kCompress, uint32_t kWordCount, bool kIsBigEndian>
void FinishInMemory(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                    uint8_t* digest) {
  static constexpr MemoryFinish kMethod = {kCompress, kWordCount, kIsBigEndian};
  FinishInMemory(state, block, waiting, bit_count, digest, kMethod);
}

}  // namespace mirolta
