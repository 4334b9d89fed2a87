#include <sys/random.h>

#include <cerrno>

#include "seam/random.h"

namespace mirolta {

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  while (count > 0) {
    const auto got = getrandom(bytes, count, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes += got;
    count -= static_cast<uint32_t>(got);
  }
  return true;
}

}  // namespace mirolta
