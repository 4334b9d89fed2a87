// SHA-256 on 32-bit words (FIPS 180-2, 6.2.2).
#include <bit>
#include <utility>

#include "hash_kernels.h"
#include "message_blocks.h"
#include "sha256_constants.h"
#include "unrolled_step.h"

namespace mirolta {

namespace {

// Rounds in a row; the later ones are a loop. A constant takes two instructions of Thumb as an operand
// and one from a table, so that all rounds in a row were longer and no faster there.
#if defined(__thumb__)
constexpr int kRow = 16;
#else
constexpr int kRow = 64;
#endif

// FIPS 180-2, 4.1.2. Nested rotations take as many operations as separate ones and fewer copies.
MIROLTA_STEP uint32_t BigSigma0(uint32_t x) {  // by 2, 13 and 22
  return std::rotr(std::rotr(std::rotr(x, 9) ^ x, 11) ^ x, 2);
}
MIROLTA_STEP uint32_t BigSigma1(uint32_t x) {  // by 6, 11 and 25
  return std::rotr(std::rotr(std::rotr(x, 14) ^ x, 5) ^ x, 6);
}
MIROLTA_STEP uint32_t SmallSigma0(uint32_t x) {  // by 7 and 18
  return std::rotr(std::rotr(x, 11) ^ x, 7) ^ x >> 3;
}
MIROLTA_STEP uint32_t SmallSigma1(uint32_t x) {  // by 17 and 19
  return std::rotr(std::rotr(x, 2) ^ x, 17) ^ x >> 10;
}

// The message schedule's word of a round; w holds the last sixteen.
template <int kRound>
MIROLTA_STEP uint32_t ScheduleWord(uint32_t (&w)[16], BlockWords block) {
  uint32_t& word = w[kRound % 16];
  if constexpr (kRound < 16) {
    word = block.BigEndian(kRound);
  } else {
    word += SmallSigma0(w[(kRound + 1) % 16]) + w[(kRound + 9) % 16] +
            SmallSigma1(w[(kRound + 14) % 16]);
  }
  return word;
}

// s holds a to h; their roles rotate with every round. b_xor_c carries over: this round's a ^ b is
// the next one's b ^ c.
template <int kRound>
MIROLTA_STEP void Round(uint32_t (&s)[8], uint32_t& b_xor_c, uint32_t (&w)[16], BlockWords block,
                        const uint32_t* constants) {
  const uint32_t a = s[(64 - kRound) % 8];
  const uint32_t b = s[(65 - kRound) % 8];
  uint32_t& d = s[(67 - kRound) % 8];
  const uint32_t e = s[(68 - kRound) % 8];
  const uint32_t f = s[(69 - kRound) % 8];
  const uint32_t g = s[(70 - kRound) % 8];
  uint32_t& h = s[(71 - kRound) % 8];
  h += ScheduleWord<kRound>(w, block) + constants[kRound % kRow];
  h += BigSigma1(e) + (((f ^ g) & e) ^ g);
  d += h;
  const uint32_t a_xor_b = a ^ b;
  h += BigSigma0(a) + ((a_xor_b & b_xor_c) ^ b);
  b_xor_c = a_xor_b;
}

template <int kFirst, int... kRounds>
MIROLTA_STEP void Rounds(uint32_t (&s)[8], uint32_t& b_xor_c, uint32_t (&w)[16], BlockWords block,
                         const uint32_t* constants, std::integer_sequence<int, kRounds...>) {
  (Round<kFirst + kRounds>(s, b_xor_c, w, block, constants), ...);
}

}  // namespace

void Sha256Portable(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  uint32_t s[8];
  for (int i = 0; i < 8; ++i) s[i] = state[i];
  ForEachBlock(blocks, block_count, [&](BlockWords block) MIROLTA_STEP_LAMBDA {
    constexpr std::make_integer_sequence<int, kRow> kRounds;
    uint32_t w[16];
    uint32_t b_xor_c = s[1] ^ s[2];
    Rounds<0>(s, b_xor_c, w, block, kSha256Constants, kRounds);
    for (int first = kRow; first != 64; first += kRow) {
      Rounds<kRow % 64>(s, b_xor_c, w, block, kSha256Constants + first, kRounds);
    }
    for (int i = 0; i < 8; ++i) {
      s[i] += state[i];
      state[i] = s[i];
    }
  });
}

}  // namespace mirolta
