// Memory operations that the language's library does not promise.
#pragma once

#include <cstddef>

namespace mirolta {

// WipeMemory fills bytes[0..size) with zero in a way that the compiler may not remove.
// Use it before secrets go out of scope or back to the allocator.
void WipeMemory(void* bytes, size_t size) noexcept;

}  // namespace mirolta
