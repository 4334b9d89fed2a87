#include "seam/memory.h"

#include <cstring>

namespace mirolta {

void WipeMemory(void* bytes, size_t size) noexcept {
  if (size == 0) return;
  std::memset(bytes, 0, size);
  // The barrier claims to read the bytes, so the stores before it have to happen.
  __asm__ __volatile__("" : : "r"(bytes) : "memory");
}

}  // namespace mirolta
