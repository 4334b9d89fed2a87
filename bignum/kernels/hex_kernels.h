// Hexadecimal conversion.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta {

// HexKernels: one implementation of both conversions.
// Shapes: words least significant first; digits most significant first, eight a word.
// Time:   write depends on count only, read on where the first other character is.
struct HexKernels {
  // out[8 count] := the lower-case digits of words[count].
  void (*write)(OLECHAR* out, const uint32_t* words, size_t count);
  // words[count] := the eight digits before end, the eight before those, and so on. Stops at eight
  // characters that are not all digits, of either case; returns how many words it has read.
  size_t (*read)(uint32_t* words, const OLECHAR* end, size_t count);
};

// HexDigitValue returns the value of a hexadecimal digit, kNoHexDigit for any other character.
inline constexpr uint32_t kNoHexDigit = 16;
uint32_t HexDigitValue(OLECHAR c) noexcept;

extern const KernelList<const HexKernels*> kHexKernels;

// CurrentHexKernels returns the first table of kHexKernels that this processor runs.
const HexKernels& CurrentHexKernels() noexcept;

extern const HexKernels kPortableHexKernels;
#if MIROLTA_KERNELS_FOR(X86)
extern const HexKernels kSse2HexKernels;
#endif
#if MIROLTA_KERNELS_FOR(AARCH64)
extern const HexKernels kNeonHexKernels;
#endif

}  // namespace mirolta
