// MD5 on 32-bit words (RFC 1321, 3.4).
#include <bit>
#include <utility>

#include "hash_kernels.h"
#include "message_blocks.h"
#include "unrolled_step.h"

namespace mirolta {

namespace {

// floor(2^32 * abs(sin(i + 1))).
constexpr uint32_t kSines[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

constexpr int kRotations[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// The message word of a step.
constexpr int WordOf(int step) {
  constexpr int kFactors[4] = {1, 5, 3, 7};
  constexpr int kOffsets[4] = {0, 1, 5, 0};
  return (kFactors[step / 16] * step + kOffsets[step / 16]) % 16;
}

// ARM complements an operand of AND for nothing, but not of OR. There the last round subtracts the
// complement of what it mixes, which is one more than the negative.
#if defined(__arm__)
constexpr bool kHasAndNot = true;
#else
constexpr bool kHasAndNot = false;
#endif

template <int kRound>
MIROLTA_STEP uint32_t Mix(uint32_t b, uint32_t c, uint32_t d) {
  if constexpr (kRound == 0) return ((c ^ d) & b) ^ d;
  if constexpr (kRound == 3 && kHasAndNot) return 0 - ((d & ~b) ^ c);
  if constexpr (kRound == 3) return (~d | b) ^ c;
  // The operands share no bit, so the sum is their or; only one of them depends on b, the newest
  // word.
  return (~d & c) + (d & b);
}

// s holds a, b, c, d; their roles rotate with every step. In the third round, which mixes b ^ c ^
// d, c_xor_d carries over: this step's b ^ c is the next one's c ^ d.
template <int kStep>
MIROLTA_STEP void Step(uint32_t (&s)[4], uint32_t& c_xor_d, BlockWords block) {
  uint32_t& a = s[(64 - kStep) % 4];
  const uint32_t b = s[(65 - kStep) % 4];
  const uint32_t c = s[(66 - kStep) % 4];
  const uint32_t d = s[(67 - kStep) % 4];
  if constexpr (kStep % 16 == 0) BlockWords::Reload();
  constexpr uint32_t kOneMore = kStep / 16 == 3 && kHasAndNot ? 1 : 0;
  a += block.LittleEndian(WordOf(kStep)) + (kSines[kStep] - kOneMore);
  if constexpr (kStep == 32) c_xor_d = c ^ d;
  if constexpr (kStep / 16 == 2) {
    const uint32_t mixed = c_xor_d ^ b;
    a += mixed;
    c_xor_d = mixed ^ d;
  } else {
    a += Mix<kStep / 16>(b, c, d);
  }
  a = std::rotl(a, kRotations[kStep / 16][kStep % 4]) + b;
}

template <int... kSteps>
MIROLTA_STEP void Steps(uint32_t (&s)[4], BlockWords block, std::integer_sequence<int, kSteps...>) {
  uint32_t c_xor_d = 0;
  (Step<kSteps>(s, c_xor_d, block), ...);
}

}  // namespace

void Md5Portable(uint32_t* state, const uint8_t* blocks, size_t block_count) {
  uint32_t s[4] = {state[0], state[1], state[2], state[3]};
  ForEachBlock(blocks, block_count, [&](BlockWords block) MIROLTA_STEP_LAMBDA {
    Steps(s, block, std::make_integer_sequence<int, 64>());
    for (int i = 0; i < 4; ++i) {
      s[i] += state[i];
      state[i] = s[i];
    }
  });
}

}  // namespace mirolta
