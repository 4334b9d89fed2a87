#include "platform.h"

#include <ntsecapi.h>

namespace mirolta {

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  return RtlGenRandom(bytes, count) != FALSE;
}

}  // namespace mirolta
