// The expanded DES or triple-DES key, in the form that all kernels take.
#pragma once

#include <cstdint>

namespace mirolta {

inline constexpr uint32_t kDesBlockSize = 8;
inline constexpr uint32_t kDesMaxRounds = 48;

// DesSchedule holds two words a round for encryption and for decryption, in order of use. The first
// word has the key bits of the S-boxes 1, 3, 5, 7, the second those of 2, 4, 6, 8: each box's in
// the lower six bits of a byte, the lowest box number in the highest byte; the other bits are 0.
// Triple DES is 48 rounds: encryption, decryption and encryption of 16 rounds each.
struct DesSchedule {
  uint32_t rounds;  // 16 or 48
  uint32_t encryption[2 * kDesMaxRounds];
  uint32_t decryption[2 * kDesMaxRounds];
};

// ExpandDesKey fills the schedule from key[byte_length]: 8 bytes are single DES, 16 bytes triple
// DES with two keys (the first again as the third), 24 bytes triple DES with three keys. The lowest
// bit of every byte is a parity bit and ignored.
// Errors: false, with the schedule unchanged, for any other length.
// Time:   looks up tables at addresses that depend on the key.
// Source: FIPS 46-3, appendix 1 (key schedule); ANSI X9.52 (triple DES).
[[nodiscard]] bool ExpandDesKey(const uint8_t* key, uint32_t byte_length,
                                DesSchedule* schedule) noexcept;

}  // namespace mirolta
