// CPUID and XCR0, and the features that they report.
#pragma once

#include <cstdint>

namespace mirolta {

// Registers as CPUID returns them; zero for a leaf that the processor does not have.
struct ProcessorReport {
  uint32_t leaf1_ecx;
  uint32_t leaf7_ebx;
  uint32_t leaf7_ecx;
  uint32_t saved_state;  // XCR0: the register files that the system saves
};

// FeaturesIn returns the ProcessorFeature bits of a report; 0 in a portable-only build.
uint32_t FeaturesIn(const ProcessorReport& report) noexcept;

}  // namespace mirolta
