// The pad of a plaintext's last block.
#pragma once

#include "platform.h"

namespace mirolta {

// The pad setting for random bytes; a setting of 0 or more is the pad byte itself.
inline constexpr LONG kRandomPad = -1;

// MakePad fills pad[count] with the low 8 bits of a pad_type of 0 or more, or for kRandomPad with
// random bytes from a generator that it seeds by the clock.
// Errors: false, unless count is 0, for any other pad_type or if the generator cannot be seeded.
// Time:   waits for the clock's next millisecond for kRandomPad.
[[nodiscard]] bool MakePad(LONG pad_type, uint8_t* pad, uint32_t count) noexcept;

}  // namespace mirolta
