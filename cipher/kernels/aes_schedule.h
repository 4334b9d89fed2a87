// The expanded AES key, in the form that all kernels take.
#pragma once

#include <cstdint>

namespace mirolta {

inline constexpr uint32_t kAesBlockSize = 16;
inline constexpr uint32_t kAesMaxRounds = 14;

// AesSchedule holds rounds + 1 round keys of four words for encryption and for decryption, in order
// of use. A word is a column of the state with the first row in its lowest byte, so on a
// little-endian processor the words in memory are the standard's bytes. The decryption keys are
// those of the equivalent inverse cipher, so encryption and decryption have the same sequence of
// steps. Aligned as plain new aligns, so that no round key crosses a cache line.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) AesSchedule {
  uint32_t encryption[4 * (kAesMaxRounds + 1)];
  uint32_t decryption[4 * (kAesMaxRounds + 1)];
  uint32_t rounds;
};

// ExpandAesKey fills the schedule from key[byte_length].
// Errors: false, with the schedule unchanged, unless byte_length is 16, 24 or 32.
// Time:   without AES instructions or SSE2, looks up tables at addresses that depend on the key.
// Source: FIPS-197, 5.2 and 5.3.5.
[[nodiscard]] bool ExpandAesKey(const uint8_t* key, uint32_t byte_length,
                                AesSchedule* schedule) noexcept;

}  // namespace mirolta
