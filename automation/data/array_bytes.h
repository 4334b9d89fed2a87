// Byte arrays to byte strings and back.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// The type of every byte-valued result.
constexpr VARTYPE kByteArrayType = VT_ARRAY | VT_UI1;

// PassesAsByteArray tests a type by mask: arrays of VT_UI4, VT_UI8 and VT_UINT pass as well.
constexpr bool PassesAsByteArray(VARTYPE type) noexcept {
  return (type & kByteArrayType) == kByteArrayType;
}

// Referent follows a reference to a value as the platform's copy does: once.
const VARIANT& Referent(const VARIANT& value) noexcept;

// PassingArray gives the array that value, not following references to values, is or refers to;
// null if its type does not pass as a byte array or there is no array.
SAFEARRAY* PassingArray(const VARIANT& value) noexcept;

// LacksData is true if the descriptor counts elements but points to no data.
bool LacksData(const SAFEARRAY* array) noexcept;

// ArrayByteCount gives the bytes that a byte array stands for: one for each element of its first
// dimension, whatever the elements are; 0 if it has none.
// Errors: E_POINTER for a null argument; the platform's status for bounds that cannot be read;
//         E_INVALIDARG for an array that lacks data.
HRESULT ArrayByteCount(SAFEARRAY* array, uint32_t* count) noexcept;

// SafeArrayToBytes copies those bytes, from the first byte of the first element on.
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
