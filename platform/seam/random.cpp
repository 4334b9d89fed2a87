#include "platform.h"

namespace mirolta {

namespace {

constexpr uint32_t kPoolSize = 256;

// A pool of entropy and the state of the seed's own sequence, one a thread.
struct Generator {
  uint32_t sequence;
  uint32_t used;
  uint8_t pool[kPoolSize];
};

thread_local Generator generator = {0, kPoolSize, {}};

bool SeedFromSystem(uint32_t seed) {
  generator.sequence = seed;
  generator.used = 0;
  return SystemEntropy(generator.pool, kPoolSize);
}

uint32_t NextFromSystem() {
  if (generator.used == kPoolSize) {
    // A seed has succeeded before, so entropy is there; were it gone, a stale pool must not be used
    // twice.
    if (!SystemEntropy(generator.pool, kPoolSize)) __builtin_trap();
    generator.used = 0;
  }
  uint32_t entropy = 0;
  for (int i = 0; i < 4; ++i) {
    entropy = entropy << 8 | generator.pool[generator.used];
    generator.pool[generator.used++] = 0;
  }
  // Adding a known sequence takes nothing from the entropy's unpredictability.
  generator.sequence = generator.sequence * 1664525u + 1013904223u;
  return (entropy ^ generator.sequence >> 8) & 0x7FFFFFFFu;
}

constexpr RandomSource kSystemSource = {SeedFromSystem, NextFromSystem};
const RandomSource* current_source = &kSystemSource;

}  // namespace

const RandomSource& CurrentRandomSource() noexcept {
  return *current_source;
}

void SetRandomSource(const RandomSource* source) noexcept {
  current_source = source != nullptr ? source : &kSystemSource;
}

uint32_t ClockSeed() noexcept {
  const DWORD first = GetTickCount();
  while (GetTickCount() == first) {
  }
  SYSTEMTIME now;
  GetLocalTime(&now);
  const uint32_t ticks = GetTickCount();
  const uint32_t date = (((uint32_t{now.wMonth} << 4 | now.wDay) << 8) | now.wYear) << 16;
  return (ticks & 0xFFFFu) | date;
}

}  // namespace mirolta
