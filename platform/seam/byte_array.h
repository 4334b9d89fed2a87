// Byte arrays for results.
#pragma once

#include <cstdint>

#include "system_headers.h"

#if !defined(_WIN32)
  #include "portable/created_bytes.h"
#endif

namespace mirolta {

// CreateByteArray makes an array of VT_UI1 with one dimension of `count` elements and lower bound
// 0. Where the platform allows it the elements are uninitialised, since clearing would double the
// cost of a large result: the caller writes them all before others see the array.
// Errors: null if memory is short.
SAFEARRAY* CreateByteArray(uint32_t count) noexcept;

// MarkPublic tells that a result of CreateByteArray holds no secret: a platform that wipes the arrays that it
// frees may leave it as it is.
inline void MarkPublic([[maybe_unused]] SAFEARRAY* array) noexcept {
#if !defined(_WIN32)
  MiroltaMarkPublic(array);
#endif
}

}  // namespace mirolta
