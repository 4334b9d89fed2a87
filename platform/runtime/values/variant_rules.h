// What type tags are valid and what their values are made of.
#pragma once

#include "portable/variant.h"

namespace mirolta::runtime {

constexpr VARTYPE BaseType(VARTYPE type) {
  return static_cast<VARTYPE>(type & VT_TYPEMASK);
}

// CheckType says whether a VARIANT may carry the tag: S_OK or DISP_E_BADVARTYPE.
HRESULT CheckType(VARTYPE type);

// ElementSize returns the bytes that a value of the type takes in an array or behind a reference;
// 0 for types that cannot be there.
ULONG ElementSize(VARTYPE type);

// CopyText makes a BSTR with the same bytes, embedded zeros and odd lengths included. A null text
// stays null. Errors: E_OUTOFMEMORY, *to is then null.
HRESULT CopyText(BSTR from, BSTR* to);

// CopyValueText is CopyText for the text of a VARIANT, where a null text becomes an empty one.
HRESULT CopyValueText(BSTR from, BSTR* to);

// ValueAddress returns where the value of the plain, non-DECIMAL type is in *value, for copies by
// size.
void* ValueAddress(VARIANT* value);

// ViewReference makes *to a shallow view of what *from refers to, which owns nothing.
// Errors: E_INVALIDARG for a null address, a type that cannot be referred to, or a reference to a
// VARIANT that itself refers to a VARIANT.
HRESULT ViewReference(const VARIANT* from, VARIANT* to);

}  // namespace mirolta::runtime
