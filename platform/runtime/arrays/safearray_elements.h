// Array elements that own something: texts, values and interfaces.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

// ArrayFeatures returns the FADF flags of an array of the type.
USHORT ArrayFeatures(VARTYPE type);

// ClearArrayElements releases what `count` elements own and zeroes them if WipesOnFree.
// Errors: the status of a value that cannot be cleared (a locked array); the elements before it are
//         cleared.
HRESULT ClearArrayElements(USHORT features, ULONG element_size, void* elements, ULONG count);

// CopyArrayElements copies `count` elements and what they own to zeroed elements.
// Errors: E_OUTOFMEMORY; `to` owns the elements copied so far.
HRESULT CopyArrayElements(USHORT features, ULONG element_size, const void* from, void* to,
                          ULONG count);

// ReadArrayElement copies an element to `to`, which the caller then owns. The former content of
// `to` is not released.
// Errors: E_OUTOFMEMORY.
HRESULT ReadArrayElement(USHORT features, ULONG element_size, const void* from, void* to);

// WriteArrayElement replaces the element at `to`. `from` is the text or interface itself; for other
// types, the address of the value.
// Errors: E_OUTOFMEMORY; E_INVALIDARG for a null address; VariantCopy's. The element is then
//         unchanged.
HRESULT WriteArrayElement(USHORT features, ULONG element_size, void* from, void* to);

}  // namespace mirolta::runtime
