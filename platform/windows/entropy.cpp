#include "platform.h"

// This header needs the ones before it.
// clang-format off
#include <ntsecapi.h>
// clang-format on

namespace mirolta {

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  return RtlGenRandom(bytes, count) != FALSE;
}

bool WatchForks() noexcept {
  return true;
}

uint32_t ForkCount() noexcept {
  return 0;
}

}  // namespace mirolta
