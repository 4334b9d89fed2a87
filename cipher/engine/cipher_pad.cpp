#include "cipher_pad.h"

#include <cstring>

namespace mirolta {

bool MakePad(LONG pad_type, uint8_t* pad, uint32_t count) noexcept {
  if (count == 0) return true;
  if (pad_type >= 0) {
    std::memset(pad, pad_type & 0xFF, count);
    return true;
  }
  if (pad_type != kRandomPad) return false;
  const RandomSource& random = CurrentRandomSource();
  if (!random.seed(ClockSeed())) return false;
  for (uint32_t i = 0; i < count; ++i) pad[i] = static_cast<uint8_t>(random.next() % 256);
  return true;
}

}  // namespace mirolta
