// Conversion between script values and automation values.
//
// script                          automation
// undefined, null                 VT_EMPTY, VT_NULL
// boolean                         VT_BOOL
// number                          VT_I4 if it is an integer of 32 bits, else VT_R8
// string                          VT_BSTR, unit for unit
// Date                            VT_DATE, local time
// Uint8Array, ArrayBuffer, ...    byte array (VT_ARRAY | VT_UI1)
// automation object, stream       VT_DISPATCH, VT_UNKNOWN
// array value, VBArray            the array
// any other object or function    VT_DISPATCH to a ScriptObject
//
// The reverse is the same. In addition all other number types become numbers, a byte array of one
// dimension a Uint8Array, other arrays values that VBArray reads, a missing argument undefined, and
// any other VT_ERROR its number.
#pragma once

#include "engine/engine_api.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// VariantFromScript converts the value at `index`. *out must be VT_EMPTY, and stays so after a
// failure.
// Errors: DISP_E_TYPEMISMATCH for symbols, kStreamClosed for a closed stream, kDisconnected if the
//         slot of a handle was freed, E_OUTOFMEMORY.
[[nodiscard]] HRESULT VariantFromScript(duk_context* engine, duk_idx_t index, VARIANT* out);

// PushVariant pushes the script value of `value`, which the caller keeps.
// Errors: throws DISP_E_BADVARTYPE for other types, the status of copying a value, the engine's
//         errors.
void PushVariant(duk_context* engine, const VARIANT& value);

// IsPlain returns whether the value at `index` is undefined, null, a boolean, number or string.
// PlainFromScript is VariantFromScript for these, and neither throws nor runs a script; S_FALSE for others.
bool IsPlain(duk_context* engine, duk_idx_t index);
[[nodiscard]] HRESULT PlainFromScript(duk_context* engine, duk_idx_t index, VARIANT* out);
// PushIfPlain pushes a number, boolean, null or undefined and never throws; false for other values.
bool PushIfPlain(duk_context* engine, const VARIANT& value);

// LeaveIfCommon moves text, bytes and automation objects from *result to *left, which is empty, and never throws; false
// for other values. PushLeft pushes such a value and takes ownership of it.
// Errors: LeaveIfCommon none; PushLeft the engine's and E_OUTOFMEMORY, when it frees the value later.
bool LeaveIfCommon(VARIANT* result, VARIANT* left) noexcept;
void PushLeft(duk_context* engine, const VARIANT& left);

// PushUnits pushes a string. PushBytes pushes a Uint8Array and returns its bytes, to be filled.
void PushUnits(duk_context* engine, UnitsView units);
uint8_t* PushBytes(duk_context* engine, size_t size);

// BytesAt returns the bytes of the buffer at `index`; false if there is none.
bool BytesAt(duk_context* engine, duk_idx_t index, const uint8_t** bytes, size_t* size);

// Call once, before any script runs.
void InstallMarshalling(duk_context* engine);

}  // namespace mirolta::host
