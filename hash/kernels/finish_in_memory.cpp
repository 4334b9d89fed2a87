#include "finish_in_memory.h"

#include <cstring>

namespace mirolta {

namespace {

constexpr uint8_t kPadding[kHashBlockSize] = {0x80};

}  // namespace

void FinishInMemory(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                    uint8_t* digest, const MemoryFinish& method) {
  if (waiting < kHashLengthOffset) {
    std::memcpy(block + waiting, kPadding, kHashLengthOffset - waiting);
  } else {
    std::memcpy(block + waiting, kPadding, kHashBlockSize - waiting);
    method.compress(state, block, 1);
    std::memset(block, 0, kHashLengthOffset);
  }
  const auto store = [&](uint8_t* bytes, uint32_t word) {
    if (method.is_big_endian == (std::endian::native != std::endian::big)) {
      word = __builtin_bswap32(word);
    }
    if (IsWordAligned(bytes)) {
      std::memcpy(__builtin_assume_aligned(bytes, sizeof word), &word, sizeof word);
    } else {
      std::memcpy(bytes, &word, sizeof word);
    }
  };
  const uint32_t bits_low = static_cast<uint32_t>(bit_count);
  const uint32_t bits_high = static_cast<uint32_t>(bit_count >> 32);
  store(block + kHashLengthOffset, method.is_big_endian ? bits_high : bits_low);
  store(block + kHashLengthOffset + 4, method.is_big_endian ? bits_low : bits_high);
  method.compress(state, block, 1);
  for (uint32_t i = 0; i < method.word_count; ++i) store(digest + 4 * i, state[i]);
}

}  // namespace mirolta
