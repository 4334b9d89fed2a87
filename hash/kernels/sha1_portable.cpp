// SHA-1 on 32-bit words (FIPS 180-2, 6.1.2).
#include <bit>
#include <utility>

#include "hash_kernels.h"
#include "message_blocks.h"
#include "unrolled_step.h"

namespace mirolta {

namespace {

// Operands of ARM are rotated for nothing: there b is not rotated when it becomes c, but c, d and e are
// where they are used.
#if defined(__arm__)
constexpr int kLate = 2;
#else
constexpr int kLate = 0;
#endif

constexpr uint32_t kConstants[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

template <int kStage>
MIROLTA_STEP uint32_t Mix(uint32_t b, uint32_t c, uint32_t d) {
  const uint32_t c_xor_d = std::rotr(c ^ d, kLate);
  if constexpr (kStage == 0) return (c_xor_d & b) ^ std::rotr(d, kLate);
  // The majority, as a sum of operands that share no bit.
  if constexpr (kStage == 2) return std::rotr(c & d, kLate) + (b & c_xor_d);
  return b ^ c_xor_d;
}

// The message schedule's word of a round; w holds the last sixteen.
template <int kRound>
MIROLTA_STEP uint32_t ScheduleWord(uint32_t (&w)[16], BlockWords block) {
  uint32_t& word = w[kRound % 16];
  if constexpr (kRound < 16) {
    word = block.BigEndian(kRound);
  } else {
    word = std::rotl(w[(kRound + 13) % 16] ^ w[(kRound + 8) % 16] ^ w[(kRound + 2) % 16] ^ word, 1);
  }
  return word;
}

// s holds a, b, c, d, e; their roles rotate with every round.
template <int kRound>
MIROLTA_STEP void Round(uint32_t (&s)[5], uint32_t (&w)[16], BlockWords block) {
  const uint32_t a = s[(80 - kRound) % 5];
  uint32_t& b = s[(81 - kRound) % 5];
  const uint32_t c = s[(82 - kRound) % 5];
  const uint32_t d = s[(83 - kRound) % 5];
  uint32_t& e = s[(84 - kRound) % 5];
  e = std::rotr(e, kLate) + ScheduleWord<kRound>(w, block) + kConstants[kRound / 20];
  e += Mix<kRound / 20>(b, c, d);
  e += std::rotl(a, 5);
  b = std::rotl(b, 30 + kLate);
}

template <int... kRounds>
MIROLTA_STEP void Rounds(uint32_t (&s)[5], BlockWords block,
                         std::integer_sequence<int, kRounds...>) {
  uint32_t w[16];
  (Round<kRounds>(s, w, block), ...);
}

}  // namespace

void Sha1Portable(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  uint32_t s[5] = {state[0], state[1], state[2], state[3], state[4]};
  ForEachBlock(blocks, block_count, [&](BlockWords block) MIROLTA_STEP_LAMBDA {
    for (int i = 2; i < 5; ++i) s[i] = std::rotl(s[i], kLate);
    Rounds(s, block, std::make_integer_sequence<int, 80>());
    for (int i = 2; i < 5; ++i) s[i] = std::rotr(s[i], kLate);
    for (int i = 0; i < 5; ++i) {
      s[i] += state[i];
      state[i] = s[i];
    }
  });
}

}  // namespace mirolta
