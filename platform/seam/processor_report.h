// What an x86 processor and its system say of themselves, and the features that this amounts to.
#pragma once

#include <cstdint>

namespace mirolta {

// Registers as CPUID leaves them. A leaf that the processor does not have is zero.
struct ProcessorReport {
  uint32_t leaf1_ecx;
  uint32_t leaf7_ebx;
  uint32_t leaf7_ecx;
  uint32_t saved_state;  // extended control register 0: which register files the system saves
};

// FeaturesIn returns the ProcessorFeature bits of a report; 0 in a portable-only build.
uint32_t FeaturesIn(const ProcessorReport& report) noexcept;

}  // namespace mirolta
