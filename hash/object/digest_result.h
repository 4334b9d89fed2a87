// A digest as a text or byte array, for every class that owns digest engines.
#pragma once

#include "hash_engine.h"
#include "platform.h"

namespace mirolta {

// What the digest properties return without an engine: a bare message number, which is a success
// code. Nothing is raised and the result stays unset; callers rely on it.
inline constexpr HRESULT kBareNotInitialized = 10104;

// DigestToText returns the digest in uppercase hexadecimal, DigestToArray as a byte array. Both end
// an open computation. Without an engine they return kBareNotInitialized.
// Errors: E_POINTER for a null out with an engine; E_OUTOFMEMORY; the status of locking the array.
HRESULT DigestToText(HashEngine* engine, BSTR* out);
HRESULT DigestToArray(HashEngine* engine, VARIANT* out);

}  // namespace mirolta
