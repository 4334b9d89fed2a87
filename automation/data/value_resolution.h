// From any automation value to a plain one.
#pragma once

#include "platform.h"

namespace mirolta {

// Default values are followed through at most this many objects.
constexpr int kMaximumDefaultValueChain = 64;

// CopyReferent is the platform's VariantCopyInd into *out, which is empty, without arrays that pass
// as byte arrays and lack data: what would stand for it is the platform's choice.
// Errors: E_INVALIDARG for those; those of VariantCopyInd. *out stays empty.
HRESULT CopyReferent(const VARIANT& value, VARIANT* out) noexcept;

// Asked of an object whose default value cannot be read: true makes it count as VT_EMPTY.
using CountsAsEmpty = bool (*)(IUnknown* object) noexcept;

// ResolveValue gives a private copy of *input: by-reference values are followed, and an object is
// replaced by its default value, that by its own, and so on.
// Errors: E_POINTER for a null argument; a failed copy's status; E_FAIL for an object that is null
//         or has no IDispatch; the failing status of reading a default value, unless
//         counts_as_empty is given and says true; DISP_E_TYPEMISMATCH for a chain of more than
//         kMaximumDefaultValueChain objects. *out is empty on failure.
HRESULT ResolveValue(const VARIANT* input, VARIANT* out,
                     CountsAsEmpty counts_as_empty = nullptr) noexcept;

}  // namespace mirolta
