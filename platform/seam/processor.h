// The instruction sets that kernels may use.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta {

// Bits of a feature set. A bit is set only if the processor has the instructions and the system
// saves the registers that they use.
enum ProcessorFeature : uint32_t {
  kFeatureSsse3 = 1u << 0,    // SSE up to 4.1
  kFeatureAvx2 = 1u << 1,     // with AVX and saved 256-bit registers
  kFeatureBmi2Adx = 1u << 2,  // mulx, adcx, adox, and BMI1
  kFeatureAesNi = 1u << 3,
  kFeatureSha = 1u << 4,     // SHA-1 and SHA-256
  kFeatureAvx512 = 1u << 5,  // F, BW, DQ, VL and saved 512-bit registers
  kFeatureVaes = 1u << 6,    // on 256-bit and, with kFeatureAvx512, on 512-bit registers
  kFeatureAvx512Ifma = 1u << 7,
  kFeatureGfni = 1u << 8,
  kFeatureArmAes = 1u << 9,  // of ARMv8, as the ones below
  kFeatureArmSha1 = 1u << 10,
  kFeatureArmSha2 = 1u << 11,  // SHA-256
  kFeatureNeon = 1u << 12,     // of ARMv7
  kFeatureSse2 = 1u << 13,     // which every x86-64 processor has
};

// ProcessorFeatures returns the set of this machine, detected once; 0 in a portable-only build.
uint32_t ProcessorFeatures() noexcept;

}  // namespace mirolta
