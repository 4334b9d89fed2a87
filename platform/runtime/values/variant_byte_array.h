// Conversion between byte arrays and texts, byte for byte.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

// TextOfByteArray makes a text of the array's bytes.
// Errors: E_INVALIDARG for a null array or several dimensions; E_OUTOFMEMORY.
HRESULT TextOfByteArray(SAFEARRAY* bytes, BSTR* text);

// ByteArrayOfText makes an array with lower bound 0.
// Errors: E_OUTOFMEMORY.
HRESULT ByteArrayOfText(BSTR text, SAFEARRAY** bytes);

}  // namespace mirolta::runtime
