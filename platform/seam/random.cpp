#include "platform.h"
#include "seam/system_source.h"

namespace mirolta {

namespace {

const RandomSource* replacement = nullptr;

}  // namespace

const RandomSource& CurrentRandomSource() noexcept {
  return replacement != nullptr ? *replacement : kSystemSource;
}

void SetRandomSource(const RandomSource* source) noexcept {
  replacement = source;
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
