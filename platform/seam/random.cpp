#include "platform.h"
#include "seam/entropy_generator.h"

namespace mirolta {

namespace {

thread_local EntropyGenerator generator;

bool SeedFromSystem(uint32_t seed) {
  return generator.Seed(seed);
}

uint32_t NextFromSystem() {
  return generator.Next();
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
