// Conversion between a number's bytes and characters.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// Code pages from 0 on are the platform's character sets; -1 is UTF-16 with the high byte first,
// lower ones UTF-16 with the low byte first. For data and keys it is the other way round: a
// number's bytes begin with the most significant one.

// NumberToCodePageText decodes the bytes of n as characters. UTF-16 drops an odd last byte. The
// text is empty for zero and for bytes that the character set cannot convert.
// Errors: E_POINTER for a null out; E_OUTOFMEMORY, with *out null.
HRESULT NumberToCodePageText(const BigInt& n, LONG code_page, BSTR* out) noexcept;

// NumberFromCodePageText sets the magnitude of n to the bytes of the characters, in a character set
// those before the first zero byte. A null or empty text is 0. The sign flag is kept.
// Errors: E_OUTOFMEMORY; n is unchanged.
HRESULT NumberFromCodePageText(BigInt& n, BSTR text, LONG code_page) noexcept;

}  // namespace mirolta
