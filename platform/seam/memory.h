// Wiping of memory.
#pragma once

#include <cstddef>
#include <cstring>

namespace mirolta {

// WipeMemory zeroes bytes[0..size); the compiler cannot remove it. Secrets are wiped before they go
// out of scope or are freed.
void WipeMemory(void* bytes, size_t size) noexcept;

// WipePiece is WipeMemory without a call, for so few bytes that compilers clear them by stores.
template <size_t kSize>
inline void WipePiece(void* bytes) noexcept {
  static_assert(kSize <= 64);
  std::memset(bytes, 0, kSize);
  __asm__ __volatile__("" : : "r"(bytes) : "memory");
}

}  // namespace mirolta
