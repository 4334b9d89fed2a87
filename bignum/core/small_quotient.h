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

// SmallQuotient returns x / y and leaves x mod y in x, y != 0. It does not call a function of the
// compiler's library, as a division of integers wider than a register does.
template <typename T>
T SmallQuotient(T* x, T y) {
  if constexpr (sizeof(T) <= sizeof(size_t)) {
    const T quotient = static_cast<T>(*x / y);
    *x = static_cast<T>(*x - quotient * y);
    return quotient;
  } else {
    return QuotientByShifts(x, y);
  }
}

}  // namespace mirolta
