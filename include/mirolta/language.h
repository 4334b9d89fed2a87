// SPDX-License-Identifier: MIT
// What C and C++ write differently, so that one declaration serves both.
#pragma once

#ifdef __cplusplus
  #define MIROLTA_INLINE inline
  #define MIROLTA_CAST(type, value) (static_cast<type>(value))
  // A named constant; in C one of int.
  #define MIROLTA_CONSTANT(type, name, value) inline constexpr type name = static_cast<type>(value)
  #define MIROLTA_IDENTIFIER inline constexpr
  // The type under an enumeration, which C does not name.
  #define MIROLTA_ENUM(type) : type
  #define MIROLTA_NO_PARAMETERS
#else
  #define MIROLTA_INLINE static inline
  #define MIROLTA_CAST(type, value) ((type)(value))
  #define MIROLTA_CONSTANT(type, name, value) enum { name = (type)(value) }
  #define MIROLTA_IDENTIFIER static const
  #define MIROLTA_ENUM(type)
  #define MIROLTA_NO_PARAMETERS void
#endif
