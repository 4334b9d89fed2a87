// Division with a quotient that is usually small, as those of Euclid's algorithm are.
#pragma once

#include <cstddef>

namespace mirolta {

// QuotientByShifts returns x / y and leaves x mod y in x, y != 0.
// Time:   a few operations a bit of the quotient.
template <typename T>
T QuotientByShifts(T* x, T y) {
  if (*x < y) return 0;
  T multiple = y;
  while (multiple <= *x - multiple) multiple = static_cast<T>(multiple + multiple);
  T quotient = 0;
  for (;;) {
    quotient = static_cast<T>(quotient + quotient);
    if (*x >= multiple) {
      *x = static_cast<T>(*x - multiple);
      quotient = static_cast<T>(quotient + 1);
    }
    if (multiple == y) return quotient;
    multiple = static_cast<T>(multiple >> 1);
  }
}

// Whether integers wider than a register are divided by the compiler's library. On a 32-bit processor
// that may take hundreds of instructions, on a 64-bit one it is faster than shifts. Some builds link
// no such library.
#if defined(MIROLTA_WITHOUT_RUNTIME)
inline constexpr bool kDividesByLibrary = false;
#else
inline constexpr bool kDividesByLibrary = sizeof(size_t) >= 8;
#endif

// SmallQuotient returns x / y and leaves x mod y in x, y != 0.
template <typename T>
T SmallQuotient(T* x, T y) {
  if constexpr (sizeof(T) <= sizeof(size_t) || kDividesByLibrary) {
    const T quotient = static_cast<T>(*x / y);
    *x = static_cast<T>(*x - quotient * y);
    return quotient;
  } else {
    return QuotientByShifts(x, y);
  }
}

}  // namespace mirolta
