// The system's headers, as few as a component needs: the build defines UNICODE, NOMINMAX and
// WIN32_LEAN_AND_MEAN.
#pragma once

#include <objbase.h>
#include <oleauto.h>
#include <olectl.h>

#include <concepts>

// These functions only read their source, but not every version of the headers declares it const.
// Where they do, overload resolution prefers the functions that are no templates.
template <typename Value>
requires std::same_as<Value, const VARIANT>
inline HRESULT VariantCopy(VARIANT* out, Value* source) {
  return VariantCopy(out, const_cast<VARIANT*>(source));
}
template <typename Value>
requires std::same_as<Value, const VARIANT>
inline HRESULT VariantCopyInd(VARIANT* out, Value* source) {
  return VariantCopyInd(out, const_cast<VARIANT*>(source));
}
template <typename Value>
requires std::same_as<Value, const VARIANT>
inline HRESULT VariantChangeType(VARIANT* out, Value* source, USHORT flags, VARTYPE type) {
  return VariantChangeType(out, const_cast<VARIANT*>(source), flags, type);
}
