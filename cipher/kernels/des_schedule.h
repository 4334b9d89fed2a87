// The expanded DES and triple-DES key that every kernel works from.
#pragma once

#include <cstdint>

namespace mirolta {

inline constexpr uint32_t kDesBlockSize = 8;
inline constexpr uint32_t kDesMaxRounds = 48;

// DesSchedule holds two words a round in order of use, for each direction. The odd word has the key
// bits of the S-boxes 1, 3, 5, 7, the even word those of 2, 4, 6, 8, the lower box number in the
// higher byte, each in the lower six bits of its byte; the other bits are 0. Triple DES is one pass
// of 48 rounds: encrypt, decrypt and encrypt are 16 rounds each.
struct DesSchedule {
  uint32_t rounds;  // 16 or 48
  uint32_t encryption[2 * kDesMaxRounds];
  uint32_t decryption[2 * kDesMaxRounds];
};

// ExpandDesKey fills the schedule from key[byte_length]: 8 bytes are single DES; 16 bytes are
// triple DES with the first key again as the third; 24 bytes are triple DES with three keys. The
// lowest bit of every byte is a parity bit, which is not looked at. Returns: false, with the
// schedule untouched, for any other length. Time:    looks up tables at addresses that depend on
// the key. Source:  FIPS 46-3.
[[nodiscard]] bool ExpandDesKey(const uint8_t* key, uint32_t byte_length,
                                DesSchedule* schedule) noexcept;

}  // namespace mirolta
