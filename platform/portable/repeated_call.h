// Calls of the system that a signal interrupts.
#pragma once

#include <cerrno>

namespace mirolta {

// Repeated makes the call, which returns a negative number with errno on failure, until it is not
// interrupted: a handler of the program that runs meanwhile is no failure.
template <typename Call>
auto Repeated(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace mirolta
