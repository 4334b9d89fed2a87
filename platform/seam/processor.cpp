#include "seam/processor.h"

#include "seam/architecture.h"
#include "seam/processor_report.h"

#if MIROLTA_KERNELS_FOR(X86)
  #include <cpuid.h>
#elif (MIROLTA_KERNELS_FOR(AARCH64) || MIROLTA_KERNELS_FOR(ARMV7)) && defined(__linux__)
  #include <sys/auxv.h>
#elif MIROLTA_KERNELS_FOR(AARCH64) && defined(_WIN32)
  #include "system_headers.h"
#endif

namespace mirolta {

#if MIROLTA_KERNELS_FOR(X86)

namespace {

uint32_t SavedState() {
  uint32_t low = 0;
  uint32_t high = 0;
  __asm__ __volatile__("xgetbv" : "=a"(low), "=d"(high) : "c"(0u));
  return low;
}

bool All(uint32_t reg, uint32_t bits) {
  return (reg & bits) == bits;
}

  // A build may ignore features, to show what a lesser processor would run.
  #if defined(MIROLTA_UP_TO_AVX2)
constexpr uint32_t kUsed =
    kFeatureSse2 | kFeatureSsse3 | kFeatureAesNi | kFeatureSha | kFeatureBmi2Adx | kFeatureAvx2;
  #else
constexpr uint32_t kUsed = ~uint32_t{0};
  #endif

uint32_t Detect() {
  uint32_t a = 0, b = 0, d = 0;
  ProcessorReport report = {};
  // Also 0 for a 32-bit processor that does not have the instruction.
  if (!__get_cpuid(1, &a, &b, &report.leaf1_ecx, &report.leaf1_edx)) return 0;
  __get_cpuid_count(7, 0, &a, &report.leaf7_ebx, &report.leaf7_ecx, &d);
  if (All(report.leaf1_ecx, bit_OSXSAVE)) report.saved_state = SavedState();
  return FeaturesIn(report) & kUsed;
}

}  // namespace

uint32_t FeaturesIn(const ProcessorReport& report) noexcept {
  const uint32_t c1 = report.leaf1_ecx;
  const uint32_t b7 = report.leaf7_ebx;
  const uint32_t c7 = report.leaf7_ecx;

  uint32_t found = 0;
  if (All(b7, bit_BMI | bit_BMI2 | bit_ADX)) found |= kFeatureBmi2Adx;
  // A system that does not tell what it saves saves what FXSAVE does.
  constexpr uint32_t kSaves128 = 0x02;  // XMM
  if (All(c1, bit_OSXSAVE) && !All(report.saved_state, kSaves128)) return found;
  if (!All(report.leaf1_edx, bit_FXSAVE | bit_SSE2)) return found;
  found |= kFeatureSse2;
  const bool sse41 = All(c1, bit_SSSE3 | bit_SSE4_1);
  if (sse41) found |= kFeatureSsse3;
  if (sse41 && All(c1, bit_AES)) found |= kFeatureAesNi;
  if (sse41 && All(b7, bit_SHA)) found |= kFeatureSha;
  if (sse41 && All(c7, bit_GFNI)) found |= kFeatureGfni;
  if (!All(c1, bit_OSXSAVE | bit_AVX)) return found;

  constexpr uint32_t kSaves256 = 0x06;  // XMM and YMM
  constexpr uint32_t kSaves512 = 0xE6;  // with opmask and both ZMM parts
  if (!All(report.saved_state, kSaves256)) return found;
  if (All(b7, bit_AVX2)) found |= kFeatureAvx2;
  if (All(c7, bit_VAES)) found |= kFeatureVaes;
  if (!All(report.saved_state, kSaves512)) return found;
  if (All(b7, bit_AVX512F | bit_AVX512BW | bit_AVX512DQ | bit_AVX512VL)) {
    found |= kFeatureAvx512;
    if (All(b7, bit_AVX512IFMA)) found |= kFeatureAvx512Ifma;
  }
  return found;
}

uint32_t ProcessorFeatures() noexcept {
  static const uint32_t features = Detect();
  return features;
}

#elif MIROLTA_KERNELS_FOR(AARCH64) || MIROLTA_KERNELS_FOR(ARMV7)

namespace {

// A capability, as Linux numbers those of the architecture, and the feature that follows.
struct CapabilityRow {
  uint64_t capability;
  ProcessorFeature feature;
};

  #if MIROLTA_KERNELS_FOR(AARCH64)
constexpr uint64_t kCapabilityAes = 1u << 3;
constexpr uint64_t kCapabilitySha1 = 1u << 5;
constexpr uint64_t kCapabilitySha2 = 1u << 6;
constexpr CapabilityRow kCapabilityRows[] = {
    {kCapabilityAes, kFeatureArmAes},
    {kCapabilitySha1, kFeatureArmSha1},
    {kCapabilitySha2, kFeatureArmSha2},
};
  #else
constexpr CapabilityRow kCapabilityRows[] = {{1u << 12, kFeatureNeon}};
  #endif

uint64_t Capabilities() {
  #if defined(__linux__)
  return getauxval(AT_HWCAP);
  #elif defined(_WIN32)
  // Windows has one answer for all of them.
  if (IsProcessorFeaturePresent(PF_ARM_V8_CRYPTO_INSTRUCTIONS_AVAILABLE) == FALSE) return 0;
  return kCapabilityAes | kCapabilitySha1 | kCapabilitySha2;
  #else
  return 0;
  #endif
}

}  // namespace

uint32_t FeaturesIn(const ProcessorReport& report) noexcept {
  uint32_t found = 0;
  for (const CapabilityRow& row : kCapabilityRows) {
    if ((report.capabilities & row.capability) != 0) found |= row.feature;
  }
  return found;
}

uint32_t ProcessorFeatures() noexcept {
  static const uint32_t features = FeaturesIn({Capabilities()});
  return features;
}

#else

uint32_t FeaturesIn(const ProcessorReport&) noexcept {
  return 0;
}

uint32_t ProcessorFeatures() noexcept {
  return 0;
}

#endif

}  // namespace mirolta
