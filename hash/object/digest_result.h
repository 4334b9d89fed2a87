// A digest handed to a caller; shared by every class that owns hash engines.
#pragma once

#include "hash_engine.h"
#include "platform.h"

namespace mirolta {

// What the digest readers return without an engine: a message number that was never made a status.
// It is a success code, nothing is raised and the result stays unset; callers rely on it.
inline constexpr HRESULT kBareNotInitialized = 10104;

// DigestToText gives the digest as uppercase hexadecimal, DigestToArray as a byte array. Both end a
// computation that is still open. A null engine gives kBareNotInitialized.
// Errors: E_POINTER for a null out with an engine; E_OUTOFMEMORY; what locking the array returns.
HRESULT DigestToText(HashEngine* engine, BSTR* out);
HRESULT DigestToArray(HashEngine* engine, VARIANT* out);

}  // namespace mirolta
