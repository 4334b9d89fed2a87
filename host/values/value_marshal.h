// Script values to automation values and back.
//
// script                          automation
// undefined, null                 VT_EMPTY, VT_NULL
// boolean                         VT_BOOL
// number                          VT_I4 if it is a whole number of 32 bits, else VT_R8
// string                          VT_BSTR, unit for unit
// Date                            VT_DATE, local time
// Uint8Array, ArrayBuffer, ...    byte array (VT_ARRAY | VT_UI1)
// automation object, stream       VT_DISPATCH, VT_UNKNOWN
// array value, VBArray            the array
// any other object or function    VT_DISPATCH to a ScriptObject
//
// The way back is the same, and further: every other number type arrives as a number, a byte array
// of one dimension as a Uint8Array, an array of another kind as a value that VBArray reads, a
// missing argument as undefined and any other VT_ERROR as its number.
#pragma once

#include "engine/engine_api.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// VariantFromScript makes the automation value of the value at `index`. *out is empty before and,
// after a failure, still. Fails with DISP_E_TYPEMISMATCH for symbols and with E_OUTOFMEMORY.
[[nodiscard]] HRESULT VariantFromScript(duk_context* engine, duk_idx_t index, VARIANT* out);

// PushVariant pushes the script's value of `value`, which stays the caller's; throws an Error for a
// type that scripts cannot have.
void PushVariant(duk_context* engine, const VARIANT& value);

// PushUnits pushes a string. PushBytes pushes a Uint8Array and returns where its bytes belong.
void PushUnits(duk_context* engine, UnitsView units);
uint8_t* PushBytes(duk_context* engine, size_t size);

// TakeBytes finds the bytes of a buffer at `index`; false if it is none.
bool TakeBytes(duk_context* engine, duk_idx_t index, const uint8_t** bytes, size_t* size);

// Call once, before any script runs.
void InstallMarshalling(duk_context* engine);

}  // namespace mirolta::host
