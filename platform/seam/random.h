// The generator behind the seeding rules of pads, random numbers and keys. Callers seed it and take
// numbers as they would with the runtime's srand and rand, but what it returns cannot be told from
// the seed: it is the system's entropy with the seed mixed in.
#pragma once

#include <cstdint>

namespace mirolta {

// RandomSource: where seeds go and numbers come from. Tests put their own in place.
struct RandomSource {
  // Seeds the generator; false if the system has no entropy to give.
  bool (*seed)(uint32_t seed);
  // The next number, 0..0x7FFFFFFF. Valid after a successful seed on the same thread.
  uint32_t (*next)();
};

// The source in use. Set before other threads run; a null source restores the system's.
const RandomSource& CurrentRandomSource() noexcept;
void SetRandomSource(const RandomSource* source) noexcept;

// ClockSeed waits until the millisecond counter changes and returns
// (t & 0xFFFF) | ((((month << 4 | day) << 8) | year) << 16), t the counter read after the local
// time; bits beyond 32 are lost.
uint32_t ClockSeed() noexcept;

// SystemEntropy fills bytes with the operating system's unpredictable bytes; false if it cannot.
bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept;

// WatchForks makes ForkCount another number in a child than in its parent; false if the system has no
// room to note that. Once is enough. Where no process forks there is nothing to watch.
bool WatchForks() noexcept;
uint32_t ForkCount() noexcept;

}  // namespace mirolta
