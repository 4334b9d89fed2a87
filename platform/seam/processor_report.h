// What processor or system report, and the features that follow from it.
#pragma once

#include <cstdint>

#include "architecture.h"

namespace mirolta {

#if MIROLTA_KERNELS_FOR(AARCH64) || MIROLTA_KERNELS_FOR(ARMV7)

// The capabilities that the system lists: AT_HWCAP of Linux.
struct ProcessorReport {
  uint64_t capabilities;
};

#else

// CPUID and XCR0: registers as CPUID returns them; zero for a leaf that the processor does not have.
struct ProcessorReport {
  uint32_t leaf1_ecx;
  uint32_t leaf1_edx;
  uint32_t leaf7_ebx;
  uint32_t leaf7_ecx;
  uint32_t saved_state;  // XCR0: the register files that the system saves
};

#endif

// FeaturesIn returns the ProcessorFeature bits of a report; 0 in a portable-only build.
uint32_t FeaturesIn(const ProcessorReport& report) noexcept;

}  // namespace mirolta
