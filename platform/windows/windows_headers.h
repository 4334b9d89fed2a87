// The system's headers, as few as a component needs.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
  #define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
  #define NOMINMAX
#endif
#ifndef UNICODE
  #define UNICODE
#endif
// windows.h comes before the others.
#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <olectl.h>
// clang-format on

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

// An entry point of a module; the definition file exports it.
#define MIROLTA_ENTRY extern "C"
