// Words to hexadecimal digits and back.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta {

// HexKernels: one implementation of both directions. Words are least significant first, digits most
// significant first, eight a word.
struct HexKernels {
  // out[8 count] := the digits of words[count], in lower case.
  void (*write)(OLECHAR* out, const uint32_t* words, size_t count);
  // Reads backwards from the characters before end, at most count words, as long as the next eight
  // are all digits of either case; returns how many words it made.
  size_t (*read)(uint32_t* words, const OLECHAR* end, size_t count);
};

// The value of a character as a hexadecimal digit, kNoHexDigit for every other one.
inline constexpr uint32_t kNoHexDigit = 16;
uint32_t HexDigitValue(OLECHAR c) noexcept;

// Every row runs on every processor of the build's architecture.
extern const KernelList<const HexKernels*> kHexKernels;

// CurrentHexKernels returns the first table of kHexKernels.
const HexKernels& CurrentHexKernels() noexcept;

extern const HexKernels kPortableHexKernels;
#if MIROLTA_KERNELS_FOR(X86_64)
extern const HexKernels kSse2HexKernels;
#endif

}  // namespace mirolta
