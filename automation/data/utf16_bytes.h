// UTF-16 code units to bytes and back, in a byte order that does not depend on the processor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta {

enum class UnitOrder { kLowFirst, kHighFirst };

// WriteUnits writes two bytes for each code unit.
// Shapes: text[length], bytes[2 * length].
inline void WriteUnits(const OLECHAR* text, size_t length, UnitOrder order,
                       uint8_t* bytes) noexcept {
  const size_t low = order == UnitOrder::kLowFirst ? 0 : 1;
  for (size_t i = 0; i < length; ++i) {
    const uint32_t unit = text[i];
    bytes[2 * i + low] = static_cast<uint8_t>(unit);
    bytes[2 * i + 1 - low] = static_cast<uint8_t>(unit >> 8);
  }
}

// ReadUnits is the inverse.
// Shapes: bytes[2 * length], text[length].
inline void ReadUnits(const uint8_t* bytes, size_t length, UnitOrder order,
                      OLECHAR* text) noexcept {
  const size_t low = order == UnitOrder::kLowFirst ? 0 : 1;
  for (size_t i = 0; i < length; ++i) {
    text[i] = static_cast<OLECHAR>(bytes[2 * i + low] | bytes[2 * i + 1 - low] << 8);
  }
}

}  // namespace mirolta
