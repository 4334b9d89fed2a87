#include "des_schedule.h"

#include "des_tables.h"

namespace mirolta {

namespace {

constexpr uint32_t kRoundsPerKey = 16;
constexpr uint32_t kKeyBytes = 8;

// The halves C and D of 28 bits each after permuted choice 1.
struct KeyHalves {
  uint32_t c;
  uint32_t d;
};

// C is the bits 1, 2 and 3 of all bytes and bit 4 of the last four; D the bits 7, 6 and 5 of all
// bytes and bit 4 of the first four. The last byte's bit comes first in each.
KeyHalves PermuteKey(const uint8_t* key) {
  uint32_t high = 0;
  uint32_t low = 0;
  for (uint32_t i = 0; i < kKeyBytes; ++i) {
    high |= kDesTables.key_high[key[i] >> 4] << i;
    low |= kDesTables.key_low[key[i] & 15] << i;
  }
  return {high >> 4, (low >> 8) << 4 | (high & 15)};
}

uint32_t RotateHalf(uint32_t half, uint32_t count) {
  return (half << count | half >> (28 - count)) & 0x0FFFFFFF;
}

uint32_t ChooseBits(const uint32_t (&choice)[7][16], uint32_t half) {
  uint32_t packed = 0;
  for (uint32_t nibble = 0; nibble < 7; ++nibble) {
    packed |= choice[nibble][half >> (24 - 4 * nibble) & 15];
  }
  return packed;
}

// words[32] := the round keys of one 8-byte key, in the order of encryption.
void ExpandSingle(const uint8_t* key, uint32_t* words) {
  constexpr uint32_t kSingleShifts = 1u << 0 | 1u << 1 | 1u << 8 | 1u << 15;
  KeyHalves halves = PermuteKey(key);
  for (uint32_t round = 0; round < kRoundsPerKey; ++round) {
    const uint32_t shift = (kSingleShifts >> round & 1) != 0 ? 1 : 2;
    halves.c = RotateHalf(halves.c, shift);
    halves.d = RotateHalf(halves.d, shift);
    const uint32_t upper = ChooseBits(kDesTables.key_choice[0], halves.c);
    const uint32_t lower = ChooseBits(kDesTables.key_choice[1], halves.d);
    words[2 * round] = (upper & 0xFFFF0000) | lower >> 16;
    words[2 * round + 1] = upper << 16 | (lower & 0xFFFF);
  }
}

// to[2 * rounds] := the round keys of from[2 * rounds] in reverse order.
void ReverseRounds(const uint32_t* from, uint32_t rounds, uint32_t* to) {
  for (uint32_t round = 0; round < rounds; ++round) {
    to[2 * round] = from[2 * (rounds - 1 - round)];
    to[2 * round + 1] = from[2 * (rounds - 1 - round) + 1];
  }
}

}  // namespace

bool ExpandDesKey(const uint8_t* key, uint32_t byte_length, DesSchedule* schedule) noexcept {
  if (byte_length != 8 && byte_length != 16 && byte_length != 24) return false;
  constexpr uint32_t kWords = 2 * kRoundsPerKey;
  uint32_t* const encryption = schedule->encryption;
  uint32_t* const decryption = schedule->decryption;

  ExpandSingle(key, encryption);
  schedule->rounds = kRoundsPerKey;
  if (byte_length > kKeyBytes) {
    // The second key decrypts: its round keys are expanded to the decryption words and reversed.
    ExpandSingle(key + kKeyBytes, decryption);
    ReverseRounds(decryption, kRoundsPerKey, encryption + kWords);
    ExpandSingle(byte_length == 24 ? key + 2 * kKeyBytes : key, encryption + 2 * kWords);
    schedule->rounds = 3 * kRoundsPerKey;
  }
  ReverseRounds(encryption, schedule->rounds, decryption);
  return true;
}

}  // namespace mirolta
