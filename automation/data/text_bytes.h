// Conversion between text and bytes by a code page, and to hexadecimal.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// Negative code pages are UTF-16: this one little-endian, all below it big-endian. The others are
// the platform's character sets.
constexpr LONG kCodePageUtf16LittleEndian = -1;

// WideToBytes converts text up to its first zero character, without a terminator. Null or empty
// text, an unknown code page and text that cannot be converted at all give no bytes and S_OK.
// Errors: E_POINTER for a null out; E_OUTOFMEMORY. *out is empty on failure.
HRESULT WideToBytes(const OLECHAR* text, LONG code_page, ByteString* out) noexcept;

// BytesToWide converts bytes to a text, which ends before its first zero character. Null bytes,
// count 0 and bytes that cannot be converted give an empty text; UTF-16 omits an odd last byte.
// Errors: E_POINTER for a null out; E_OUTOFMEMORY. *out is null on failure.
HRESULT BytesToWide(const uint8_t* bytes, uint32_t count, LONG code_page, BSTR* out) noexcept;

// BytesToHex writes length / 2 bytes as uppercase hexadecimal and a terminator.
// Shapes: bytes[length / 2], out[length + 1].
// Errors: E_POINTER for null bytes or out; E_INVALIDARG for an odd length. Nothing is written then.
HRESULT BytesToHex(const uint8_t* bytes, LONG length, OLECHAR* out) noexcept;

}  // namespace mirolta
