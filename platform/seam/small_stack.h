// Where threads have little stack.
#pragma once

namespace mirolta {

// kSmallStack: devices with 32-bit ARM processors give a thread some kilobytes. Buffers are allocated
// there that elsewhere are in frames, and no call uses 4 KB of stack: `make size` computes it.
#if defined(__arm__)
inline constexpr bool kSmallStack = true;
#else
inline constexpr bool kSmallStack = false;
#endif

}  // namespace mirolta
