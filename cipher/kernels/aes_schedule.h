// The expanded AES key that every kernel works from.
#pragma once

#include <cstdint>

namespace mirolta {

inline constexpr uint32_t kAesBlockSize = 16;
inline constexpr uint32_t kAesMaxRounds = 14;

// AesSchedule holds (rounds + 1) round keys of four words in order of use, for each direction. A
// word is a column of the state with the first row in its lowest byte, so the
// words of a little-endian processor are the standard's bytes. The decryption keys are those
// of the equivalent inverse cipher, so both directions run the same sequence of steps.
// Aligned as well as plain new aligns anything, for keys that do not cross lines of the cache.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) AesSchedule {
  uint32_t encryption[4 * (kAesMaxRounds + 1)];
  uint32_t decryption[4 * (kAesMaxRounds + 1)];
  uint32_t rounds;
};

// ExpandAesKey fills the schedule from key[byte_length].
// Returns: false, with the schedule untouched, unless byte_length is 16, 24 or 32.
// Time:    without AES instructions, looks up tables at addresses that depend on the key.
// Source:  FIPS-197, 5.2 and 5.3.5.
[[nodiscard]] bool ExpandAesKey(const uint8_t* key, uint32_t byte_length,
                                AesSchedule* schedule) noexcept;

}  // namespace mirolta
