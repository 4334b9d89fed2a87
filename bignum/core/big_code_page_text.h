// Numbers whose bytes are characters.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// Code pages here: from 0 on the platform's character sets; -1 UTF-16 with the high byte first,
// all below it with the low byte first. That is the other way round than for data and keys: a
// number's bytes begin with the most significant one.

// NumberToCodePageText reads the bytes of n as characters. UTF-16 drops an odd last byte; zero
// gives an empty text, and so do bytes that the character set cannot convert.
// Errors: E_POINTER for a null out; E_OUTOFMEMORY, *out null.
HRESULT NumberToCodePageText(const BigInt& n, LONG code_page, BSTR* out) noexcept;

// NumberFromCodePageText makes n the number that the characters' bytes are; in a character set they
// end before the first zero byte. A null or empty text is zero. The sign's flag stays.
// Errors: E_OUTOFMEMORY, n unchanged.
HRESULT NumberFromCodePageText(BigInt& n, BSTR text, LONG code_page) noexcept;

}  // namespace mirolta
