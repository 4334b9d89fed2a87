// Replaces references and objects by the values that they stand for.
#pragma once

#include "platform.h"

namespace mirolta {

// Default values are followed through at most this many objects.
constexpr int kMaximumDefaultValueChain = 64;

// CopyReferent is VariantCopyInd into *out, which must be empty. Arrays that pass as byte arrays
// and lack data are refused, because platforms copy them differently, and so are references to
// nothing, which some platforms read.
// Errors: E_INVALIDARG for both; those of VariantCopyInd. *out stays empty.
HRESULT CopyReferent(const VARIANT& value, VARIANT* out) noexcept;

// Called for an object whose default value cannot be read; true makes it count as VT_EMPTY.
using CountsAsEmpty = bool (*)(IUnknown* object) noexcept;

// ResolveValue copies *input: references are followed, and an object is replaced by its default
// value, repeatedly while that is an object.
// Errors: E_POINTER for a null argument; a failed copy's status; E_FAIL for an object that is null
//         or has no IDispatch; the failing status of reading a default value, unless
//         counts_as_empty returns true; DISP_E_TYPEMISMATCH for a chain of more than
//         kMaximumDefaultValueChain objects. *out is empty on failure.
HRESULT ResolveValue(const VARIANT* input, VARIANT* out,
                     CountsAsEmpty counts_as_empty = nullptr) noexcept;

}  // namespace mirolta
