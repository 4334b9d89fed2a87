// The end of a digest, padded in memory, for any compression function.
#pragma once

#include <cstring>

#include "hash_kernels.h"

namespace mirolta {

// FinishInMemory is a FinishDigest kernel for the compression function kCompress, with kWordCount
// words of state. kBigEndian is the byte order of the words and of the bit length.
// Source: RFC 1321, 3.1, 3.2 and 3.5; FIPS 180-2, 5.1.1.
template <CompressKernel kCompress, uint32_t kWordCount, bool kBigEndian>
__attribute__((noinline)) void FinishInMemory(uint32_t* state, uint8_t* block, uint32_t waiting,
                                              uint64_t bit_count, uint8_t* digest) {
  constexpr auto store = kBigEndian ? StoreBigEndian32 : StoreLittleEndian32;
  static constexpr uint8_t kPadding[kHashBlockSize] = {0x80};
  if (waiting < kHashLengthOffset) {
    std::memcpy(block + waiting, kPadding, kHashLengthOffset - waiting);
  } else {
    std::memcpy(block + waiting, kPadding, kHashBlockSize - waiting);
    kCompress(state, block, 1);
    std::memset(block, 0, kHashLengthOffset);
  }
  const uint32_t bits_low = static_cast<uint32_t>(bit_count);
  const uint32_t bits_high = static_cast<uint32_t>(bit_count >> 32);
  store(block + kHashLengthOffset, kBigEndian ? bits_high : bits_low);
  store(block + kHashLengthOffset + 4, kBigEndian ? bits_low : bits_high);
  kCompress(state, block, 1);
  for (uint32_t i = 0; i < kWordCount; ++i) store(digest + 4 * i, state[i]);
}

}  // namespace mirolta
