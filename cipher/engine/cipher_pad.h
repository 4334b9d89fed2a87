// The bytes that fill up the last block of a plaintext.
#pragma once

#include "platform.h"

namespace mirolta {

// The pad setting that asks for random bytes; settings from 0 on are the byte itself.
inline constexpr LONG kRandomPad = -1;

// MakePad fills pad[count]: with the low 8 bits of a pad_type of 0 or more, or with random bytes
// from a generator seeded by the clock for this pad, which waits for the clock's next millisecond.
// Returns: false for any other pad_type, or if the generator cannot be seeded. A count of 0 needs
//          neither and succeeds.
[[nodiscard]] bool MakePad(LONG pad_type, uint8_t* pad, uint32_t count) noexcept;

}  // namespace mirolta
