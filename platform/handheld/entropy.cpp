#include "platform.h"

namespace mirolta {

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  return CeGenRandom(count, bytes) != FALSE;
}

bool WatchForks() noexcept {
  return true;
}

uint32_t ForkCount() noexcept {
  return 0;
}

}  // namespace mirolta
