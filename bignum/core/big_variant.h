// Numbers from automation values and back.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// How text stands for a number.
enum class NumberBase { kDecimal, kHexadecimal };

// NumberFromVariant makes n the number that a value stands for: text as it says, a byte array most
// significant byte first, integers and fractions of up to 32 bits as the platform converts them to
// VT_UI4; VT_EMPTY, VT_NULL and an argument left out are zero. An object counts as its default
// value, an IPexBigNumber that holds zero, and so has none that can be read, as zero. The sign's
// flag stays.
// Errors: DISP_E_TYPEMISMATCH for any other type, references included; the platform's status for a
//         value that cannot be copied; DISP_E_OVERFLOW for a number that is no VT_UI4, such as one
//         below zero; those of ResolveValue; E_OUTOFMEMORY. n is unchanged.
HRESULT NumberFromVariant(BigInt& n, const VARIANT& value, NumberBase base) noexcept;

// NumberToVariant gives n as text (VT_BSTR) or as a byte array (VT_ARRAY | VT_UI1) in *out, whose
// old content is overwritten, not cleared. The text of zero is a null text, which reads as memory
// that ran out; its byte array has no elements.
// Errors: E_POINTER for a null out; DISP_E_TYPEMISMATCH for another type; E_OUTOFMEMORY, for the
//         text of zero too. *out is empty then.
HRESULT NumberToVariant(const BigInt& n, VARTYPE type, NumberBase base, VARIANT* out) noexcept;

}  // namespace mirolta
