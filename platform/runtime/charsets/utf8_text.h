// UTF-8, one code point at a time.
#pragma once

#include "mirolta/base_types.h"

namespace mirolta::runtime {

constexpr uint32_t kNoCodePoint = 0xFFFFFFFFu;

// DecodeUtf8 reads one code point and returns the number of bytes it has. For an ill-formed
// sequence *point is kNoCodePoint, and the result is the length of its maximal subpart, at least 1.
// Shapes: bytes[size], size > 0.
// Source: RFC 3629, section 4; Unicode 3.9, "U+FFFD Substitution of Maximal Subparts".
size_t DecodeUtf8(const char* bytes, size_t size, uint32_t* point);

// EncodeUtf8 writes a code point, unpaired surrogates included, and returns the bytes used.
// Shapes: bytes[4]; point < 0x110000.
// Source: RFC 3629, section 3.
size_t EncodeUtf8(uint32_t point, char* bytes);

}  // namespace mirolta::runtime
