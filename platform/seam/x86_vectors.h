// What differs between the two modes of x86 processors, for kernels that both modes share.
#pragma once

#include <cstdint>

#include "architecture.h"

namespace mirolta {

// kVectorRegisters: registers that AVX2 and earlier instructions name. In 32-bit mode those of AVX-512 are
// no more.
inline constexpr uint32_t kVectorRegisters = MIROLTA_KERNELS_FOR(X86_64) ? 16 : 8;

}  // namespace mirolta
