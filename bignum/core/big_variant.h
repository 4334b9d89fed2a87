// Conversion between numbers and automation values.
#pragma once

#include "big_int.h"
#include "platform.h"

namespace mirolta {

// NumberBase: the base of a number's text.
enum class NumberBase { kDecimal, kHexadecimal };

// NumberFromVariant sets the magnitude of n to a value: text in the given base; a byte array, most
// significant byte first; integers up to 32 bits and floating-point numbers, converted to VT_UI4 by
// the platform; 0 for VT_EMPTY, VT_NULL and an omitted argument. An object is converted by its
// default value; an IPexBigNumber that is zero, whose default value cannot be read, gives 0. The
// sign flag is kept.
// Errors: DISP_E_TYPEMISMATCH for any other type, references included; the platform's status for a
//         value that cannot be copied; DISP_E_OVERFLOW for a number outside VT_UI4, such as a
//         negative one; those of ResolveValue; E_OUTOFMEMORY. n is unchanged.
HRESULT NumberFromVariant(BigInt& n, const VARIANT& value, NumberBase base) noexcept;

// NumberToVariant sets *out to the magnitude of n as text (VT_BSTR) or as a byte array
// (VT_ARRAY | VT_UI1), which has no elements for zero. It overwrites *out without clearing it.
// Errors: E_POINTER for a null out; DISP_E_TYPEMISMATCH for another type; E_OUTOFMEMORY, also for
//         the text of zero. *out is empty.
HRESULT NumberToVariant(const BigInt& n, VARTYPE type, NumberBase base, VARIANT* out) noexcept;

}  // namespace mirolta
