// UTF-16, one code point at a time.
#pragma once

#include "mirolta/base_types.h"

namespace mirolta::runtime {

constexpr bool IsHighSurrogate(uint32_t unit) {
  return (unit & 0xFFFFFC00u) == 0xD800u;
}
constexpr bool IsLowSurrogate(uint32_t unit) {
  return (unit & 0xFFFFFC00u) == 0xDC00u;
}

// DecodeUtf16 reads one code point and returns the number of units it has; an unpaired surrogate is
// returned as it is.
// Shapes: text[size], size > 0.
// Source: RFC 2781, section 2.2.
size_t DecodeUtf16(const WCHAR* text, size_t size, uint32_t* point);

// EncodeUtf16 writes a code point, unpaired surrogates included, and returns the units used.
// Shapes: units[2]; point < 0x110000.
// Source: RFC 2781, section 2.1.
size_t EncodeUtf16(uint32_t point, WCHAR* units);

}  // namespace mirolta::runtime
