// How an automation value becomes bytes. With it come the conversions that it is made of.
#pragma once

#include "array_bytes.h"
#include "byte_string.h"
#include "platform.h"
#include "text_bytes.h"
#include "value_resolution.h"

namespace mirolta {

// VariantToBytes gives the bytes of a byte array, or of the text that any other value has, through
// code_page. By-reference values and objects with a default value count as the plain value.
// Errors: E_POINTER for a null out; those of ResolveValue, SafeArrayToBytes and WideToBytes; the
//         platform's status for a value that has no text. *out is empty on failure.
HRESULT VariantToBytes(const VARIANT& input, LONG code_page, ByteString* out) noexcept;

// VariantToByteArrayBytes takes byte arrays and, as no bytes, VT_EMPTY; objects are not resolved.
// The type is tested by PassesAsByteArray; other elements than bytes give as many bytes as there
// are elements.
// Errors: E_POINTER for a null out; a failed copy's status; DISP_E_TYPEMISMATCH for any other type
//         and for a null array; those of SafeArrayToBytes. *out is empty on failure.
HRESULT VariantToByteArrayBytes(const VARIANT& input, ByteString* out) noexcept;

// The steps that the conversions share.

// CoerceToText turns *value into its text in place, with the platform's standard coercion.
// Errors: the platform's status; *value is unchanged then.
HRESULT CoerceToText(VARIANT* value) noexcept;

}  // namespace mirolta
