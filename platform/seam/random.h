// The generator of pads, random numbers and keys. Callers seed it and draw numbers as with srand
// and rand, but the numbers are not determined by the seed: they are system entropy mixed with it.
#pragma once

#include <cstdint>

namespace mirolta {

// RandomSource: the functions of a generator, which tests replace.
struct RandomSource {
  // Seeds the generator; false if the system has no entropy.
  bool (*seed)(uint32_t seed);
  // The next number, 0..0x7FFFFFFF. Valid after a successful seed on the same thread.
  uint32_t (*next)();
};

// The generator in use. Set before other threads run; null restores the system's.
const RandomSource& CurrentRandomSource() noexcept;
void SetRandomSource(const RandomSource* source) noexcept;

// ClockSeed waits until the millisecond counter changes and returns
// (t & 0xFFFF) | ((((month << 4 | day) << 8) | year) << 16) modulo 2^32, where t is the counter
// read after the local time.
uint32_t ClockSeed() noexcept;

// SystemEntropy fills bytes[0..count) with unpredictable bytes of the operating system.
// Errors: false if it has none.
bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept;

// WatchForks makes ForkCount differ between a parent and the children that it forks from now on.
// One call is enough; systems without fork need none.
// Errors: false if memory is short.
bool WatchForks() noexcept;
uint32_t ForkCount() noexcept;

}  // namespace mirolta
