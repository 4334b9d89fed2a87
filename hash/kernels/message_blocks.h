// The blocks of a message and their words, where loads need aligned addresses and where they do not.
#pragma once

#include <cstring>

#include "hash_kernels.h"
#include "unrolled_step.h"

namespace mirolta {

#if defined(__arm__) && !defined(__ARM_FEATURE_UNALIGNED)

// BlockWords views a block at an aligned address.
class BlockWords {
 public:
  explicit BlockWords(const uint8_t* block) noexcept : bytes_(block) {}

  uint32_t LittleEndian(int i) const noexcept { return LoadAlignedLittleEndian32(bytes_ + 4 * i); }
  uint32_t BigEndian(int i) const noexcept { return LoadAlignedBigEndian32(bytes_ + 4 * i); }

  // Reload: words are loaded again when they are used again. Else the compiler would store on the
  // stack what it has no register for, and load that.
  static void Reload() noexcept { __asm__ volatile("" : : : "memory"); }

 private:
  const uint8_t* bytes_;
};

// ForEachBlock calls absorb with the BlockWords of each block. Blocks that are not aligned are copied,
// which takes fewer instructions than to load their bytes.
template <typename Absorb>
MIROLTA_STEP void ForEachBlock(const uint8_t* blocks, size_t block_count, const Absorb& absorb) {
  constexpr size_t kCopiedBlocks = 4;
  alignas(uint32_t) uint8_t copy[kCopiedBlocks * kHashBlockSize];
  while (block_count != 0) {
    const uint8_t* from = blocks;
    size_t run = block_count;
    if (!IsWordAligned(blocks)) {
      if (run > kCopiedBlocks) run = kCopiedBlocks;
      std::memcpy(copy, blocks, run * kHashBlockSize);
      from = copy;
    }
    blocks += run * kHashBlockSize;
    block_count -= run;
    for (; run != 0; --run, from += kHashBlockSize) absorb(BlockWords(from));
  }
}

#else

class BlockWords {
 public:
  explicit BlockWords(const uint8_t* block) noexcept : bytes_(block) {}

  uint32_t LittleEndian(int i) const noexcept { return LoadLittleEndian32(bytes_ + 4 * i); }
  uint32_t BigEndian(int i) const noexcept { return LoadBigEndian32(bytes_ + 4 * i); }
  static void Reload() noexcept {}

 private:
  const uint8_t* bytes_;
};

template <typename Absorb>
MIROLTA_STEP void ForEachBlock(const uint8_t* blocks, size_t block_count, const Absorb& absorb) {
  for (; block_count != 0; --block_count, blocks += kHashBlockSize) absorb(BlockWords(blocks));
}

#endif

}  // namespace mirolta
