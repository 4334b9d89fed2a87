// Between 16-bit text and the bytes of UTF-8: single steps, and whole file names.
#pragma once

#include "heap/runtime_array.h"
#include "portable/base_types.h"

namespace mirolta {

constexpr uint32_t kNoCodePoint = 0xFFFFFFFFu;

constexpr bool IsHighSurrogate(uint32_t unit) {
  return (unit & 0xFFFFFC00u) == 0xD800u;
}
constexpr bool IsLowSurrogate(uint32_t unit) {
  return (unit & 0xFFFFFC00u) == 0xDC00u;
}

// DecodeUtf8 reads one character of bytes[0..size), size > 0, and returns how many bytes it took.
// What is no character takes the longest part that could have begun one, at least a byte, and gives
// kNoCodePoint.
size_t DecodeUtf8(const char* bytes, size_t size, uint32_t* point);

// EncodeUtf8 writes point (a lone surrogate included) to bytes[0..4) and returns the bytes used.
size_t EncodeUtf8(uint32_t point, char* bytes);

// DecodeUtf16 reads one character of text[0..size), size > 0, and returns how many units it took;
// a lone surrogate is returned as it is.
size_t DecodeUtf16(const WCHAR* text, size_t size, uint32_t* point);

// File names. Bytes that are no UTF-8 become lone surrogates U+DC80..U+DCFF and turn back into
// themselves, so every name survives the way there and back. Both append, without terminator;
// false if memory is short.
[[nodiscard]] bool AppendWideFileName(const char* name, size_t size, RuntimeArray<WCHAR>* text);
[[nodiscard]] bool AppendFileName(LPCWSTR text, size_t size, RuntimeArray<char>* name);

}  // namespace mirolta
