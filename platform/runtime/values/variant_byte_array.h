// Arrays of bytes and texts turn into each other byte for byte.
#pragma once

#include "portable/variant.h"

namespace mirolta::runtime {

// Errors: E_INVALIDARG for no array or more than one dimension, E_OUTOFMEMORY.
HRESULT TextOfByteArray(SAFEARRAY* bytes, BSTR* text);

// ByteArrayOfText makes an array that starts at 0. Errors: E_OUTOFMEMORY.
HRESULT ByteArrayOfText(BSTR text, SAFEARRAY** bytes);

}  // namespace mirolta::runtime
