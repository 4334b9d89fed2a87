// Wiping of memory.
#pragma once

#include <cstddef>

namespace mirolta {

// WipeMemory zeroes bytes[0..size); the compiler cannot remove it. Secrets are wiped before they go
// out of scope or are freed.
void WipeMemory(void* bytes, size_t size) noexcept;

}  // namespace mirolta
