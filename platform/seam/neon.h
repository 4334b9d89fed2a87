// The vectors of NEON, for kernels that both 32-bit and 64-bit ARM processors run.
#pragma once

#include "architecture.h"
#include "processor.h"

#if MIROLTA_KERNELS_FOR(NEON)

  #include <arm_neon.h>

  // The attribute of functions that use them.
  #if defined(__aarch64__) || defined(__ARM_NEON)
    #define MIROLTA_NEON
  #else
    #define MIROLTA_NEON __attribute__((target("fpu=neon")))
  #endif

#endif

namespace mirolta {

#if MIROLTA_KERNELS_FOR(AARCH64)
inline constexpr uint32_t kNeedsNeon = 0;
#else
inline constexpr uint32_t kNeedsNeon = kFeatureNeon;
#endif

}  // namespace mirolta
