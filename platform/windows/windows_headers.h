// The system's own headers, kept to what a component needs of them.
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
// The first of them comes before all others.
// clang-format off
#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <olectl.h>
// clang-format on

#include <concepts>

// These only read their source; not every version of the headers says so. Where they do, the plain
// functions are the better match.
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
