#include "hex_kernels.h"

namespace mirolta {

namespace {

constexpr OLECHAR kDigits[] = OLESTR("0123456789abcdef");

// HexDigitValue of the characters below 128.
struct HexValues {
  uint8_t of[128];
};

constexpr HexValues MakeHexValues() {
  HexValues values = {};
  for (int c = 0; c < 128; ++c) {
    uint8_t value = kNoHexDigit;
    if (c >= '0' && c <= '9') value = static_cast<uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') value = static_cast<uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') value = static_cast<uint8_t>(c - 'A' + 10);
    values.of[c] = value;
  }
  return values;
}

constexpr HexValues kHexValues = MakeHexValues();

void Write(OLECHAR* out, const uint32_t* words, size_t count) {
  for (size_t i = count; i-- != 0; out += 8) {
    for (uint32_t j = 0; j < 8; ++j) out[j] = kDigits[words[i] >> (28 - 4 * j) & 15];
  }
}

size_t Read(uint32_t* words, const OLECHAR* end, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    uint32_t word = 0;
    uint32_t all = 0;
    for (uint32_t j = 0; j < 8; ++j) {
      const uint32_t digit = HexDigitValue(*--end);
      all |= digit;
      word |= (digit & 15) << (4 * j);
    }
    if (all >= kNoHexDigit) return i;
    words[i] = word;
  }
  return count;
}

constexpr Kernel<const HexKernels*> kRows[] = {
#if MIROLTA_KERNELS_FOR(X86)
    {"sse2", kFeatureSse2, &kSse2HexKernels},
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
    // Advanced SIMD is part of AArch64.
    {"neon", 0, &kNeonHexKernels},
#endif
    {"portable", 0, &kPortableHexKernels},
};

}  // namespace

constexpr HexKernels kPortableHexKernels = {Write, Read};

uint32_t HexDigitValue(OLECHAR c) noexcept {
  return c < 128 ? kHexValues.of[c] : kNoHexDigit;
}

constinit const KernelList<const HexKernels*> kHexKernels = kRows;

const HexKernels& CurrentHexKernels() noexcept {
  return *CurrentKernel<kHexKernels>();
}

}  // namespace mirolta
