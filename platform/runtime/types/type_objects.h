// The objects over a copied library: ITypeLib, and ITypeInfo for each of its types.
#pragma once

#include "types/copied_library.h"

namespace mirolta::runtime {

// MakeTypeInfo returns the type information of type `index` (< TypeCount), or of the root dispatch
// interface for kDispatchType. The object holds a reference to the library.
// Errors: E_OUTOFMEMORY; *out is then null.
constexpr UINT kDispatchType = UINT32_MAX;
HRESULT MakeTypeInfo(CopiedLibrary* library, UINT index, ITypeInfo** out);

// MakeTypeLib returns the library object; it takes over the caller's reference.
// Errors: E_OUTOFMEMORY; *out is then null and the reference released.
HRESULT MakeTypeLib(CopiedLibrary* library, ITypeLib** out);

}  // namespace mirolta::runtime
