// Which type tags are valid, and what their values consist of.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

constexpr VARTYPE BaseType(VARTYPE type) {
  return static_cast<VARTYPE>(type & VT_TYPEMASK);
}

// CheckType says whether a VARIANT may carry the tag: S_OK or DISP_E_BADVARTYPE.
HRESULT CheckType(VARTYPE type);

// ElementSize returns the bytes that a value of the type takes in an array or behind a reference;
// 0 for types that cannot be there.
ULONG ElementSize(VARTYPE type);

// CopyText makes a BSTR with the same bytes, embedded zeros and odd lengths included; null stays
// null.
// Errors: E_OUTOFMEMORY; *to is then null.
HRESULT CopyText(BSTR from, BSTR* to);

// CopyValueText is CopyText for the text of a VARIANT, where null becomes an empty text.
// Errors: E_OUTOFMEMORY; *to is then null.
HRESULT CopyValueText(BSTR from, BSTR* to);

// ValueAddress returns the address of the value in *value, of a plain type other than DECIMAL.
void* ValueAddress(VARIANT* value);

// ReplaceValue clears *to and moves *made there. It is called last, since *to may be what *made was
// made from.
// Errors: VariantClear's; *made is then cleared instead.
HRESULT ReplaceValue(VARIANT* to, VARIANT* made);

// ViewReference sets *to to a shallow view of what *from refers to; it owns nothing.
// Errors: E_INVALIDARG for a null address, a type that cannot be referred to, or a reference to a
//         VARIANT that itself refers to a VARIANT.
HRESULT ViewReference(const VARIANT* from, VARIANT* to);

}  // namespace mirolta::runtime
