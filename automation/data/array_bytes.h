// Byte arrays to byte strings and back.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// The type of every byte-valued result.
constexpr VARTYPE kByteArrayType = VT_ARRAY | VT_UI1;

// PassesAsByteArray tests a type by mask: arrays of VT_UI4, VT_UI8 and VT_UINT pass too.
constexpr bool PassesAsByteArray(VARTYPE type) noexcept {
  return (type & kByteArrayType) == kByteArrayType;
}

// Referent dereferences a VT_BYREF | VT_VARIANT once, as the platform's copy does.
const VARIANT& Referent(const VARIANT& value) noexcept;

// PassingArray returns the array that value contains or refers to, without following references to
// values; null if its type does not pass as a byte array or there is no array.
SAFEARRAY* PassingArray(const VARIANT& value) noexcept;

// LacksData is true if the descriptor has elements but its data pointer is null.
bool LacksData(const SAFEARRAY* array) noexcept;

// ArrayByteCount counts the bytes of a byte array: one for each element of its first dimension,
// whatever the element size.
// Errors: E_POINTER for a null argument; the platform's status for bounds that cannot be read;
//         E_INVALIDARG for an array that lacks data.
HRESULT ArrayByteCount(SAFEARRAY* array, uint32_t* count) noexcept;

// SafeArrayToBytes copies that many bytes from the start of the data.
// Errors: as ArrayByteCount; the platform's status for data that cannot be locked; E_OUTOFMEMORY.
//         *out is empty on failure.
HRESULT SafeArrayToBytes(SAFEARRAY* array, ByteString* out) noexcept;

// BytesToSafeArray makes a one-dimensional array of VT_UI1, lower bound 0, with count elements.
// Errors: E_POINTER for a null out, or for null bytes with a count; E_OUTOFMEMORY; the platform's
//         status for data that cannot be locked. *out is null on failure.
HRESULT BytesToSafeArray(const uint8_t* bytes, uint32_t count, SAFEARRAY** out) noexcept;

// BytesToVariant puts such an array into *out, whose old content is overwritten, not cleared.
// Errors: as BytesToSafeArray; *out is empty on failure.
HRESULT BytesToVariant(const uint8_t* bytes, uint32_t count, VARIANT* out) noexcept;

}  // namespace mirolta
