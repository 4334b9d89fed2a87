// The first argument of the system call at which the plugin prints its count.
#pragma once

#include <cstdint>

namespace mirolta::bench {

inline constexpr uint32_t kMark = 0x6D61726B;

}  // namespace mirolta::bench
