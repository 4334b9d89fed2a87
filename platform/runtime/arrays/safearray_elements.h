// Elements of arrays that own something: texts, values and interfaces.
#pragma once

#include "portable/variant.h"

namespace mirolta::runtime {

// ArrayFeatures returns the flags of an array of the type, ownership and type knowledge.
USHORT ArrayFeatures(VARTYPE type);

// ClearArrayElements ends what `count` elements own and zeroes them (see
// MiroltaKeepDestroyedArrays). Errors: the status of a value that refuses (a locked array); the
// elements before it are cleared.
HRESULT ClearArrayElements(USHORT features, ULONG element_size, void* elements, ULONG count);

// CopyArrayElements copies `count` elements with what they own to zeroed elements.
// Errors: E_OUTOFMEMORY; the elements copied so far stay owned by `to`.
HRESULT CopyArrayElements(USHORT features, ULONG element_size, const void* from, void* to,
                          ULONG count);

// ReadArrayElement gives the caller an element of its own at `to`, whose former content is ignored
// (a VARIANT's is cleared).
HRESULT ReadArrayElement(USHORT features, ULONG element_size, const void* from, void* to);

// WriteArrayElement replaces the element at `to`. For texts and interfaces `from` is the handle
// itself; for all else the address of the value.
HRESULT WriteArrayElement(USHORT features, ULONG element_size, void* from, void* to);

}  // namespace mirolta::runtime
