// Conversion of automation values to bytes.
#pragma once

#include "array_bytes.h"
#include "byte_string.h"
#include "platform.h"
#include "text_bytes.h"
#include "value_resolution.h"

namespace mirolta {

// VariantToBytes gives the bytes of a byte array, or converts any other value to text and the text
// to bytes by code_page. References and objects are replaced by their values (ResolveValue).
// Errors: E_POINTER for a null out; those of ResolveValue, SafeArrayToBytes and WideToBytes; the
//         platform's status for a value not convertible to text. *out is empty on failure.
HRESULT VariantToBytes(const VARIANT& input, LONG code_page, ByteString* out) noexcept;

// VariantToByteArrayBytes accepts byte arrays (PassesAsByteArray) and, as no bytes, VT_EMPTY;
// objects are not resolved. Elements that are not bytes give one byte each.
// Errors: E_POINTER for a null out; a failed copy's status; DISP_E_TYPEMISMATCH for any other type
//         and for a null array; those of SafeArrayToBytes. *out is empty on failure.
HRESULT VariantToByteArrayBytes(const VARIANT& input, ByteString* out) noexcept;

// Steps of the conversions.

// CoerceToText converts *value to text in place, by the platform's standard coercion.
// Errors: the platform's status; *value is unchanged then.
HRESULT CoerceToText(VARIANT* value) noexcept;

}  // namespace mirolta
