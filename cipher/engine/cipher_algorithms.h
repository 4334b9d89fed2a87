// The table of ciphers, and their engines by number.
#pragma once

#include <memory>

#include "cipher_engine.h"
#include "platform.h"
#include "wide_name.h"

namespace mirolta {

// Numbers of the ciphers: their positions in kCipherNames.
inline constexpr LONG kCipherAes = 0;
inline constexpr LONG kCipherDes = 1;

// The names, ended by an empty slot.
extern const NameSlot kCipherNames[];

// FindCipherAlgorithm returns the number of the cipher name[length], letter case included, or -1; a
// null name is not found.
LONG FindCipherAlgorithm(const OLECHAR* name, uint32_t length) noexcept;
// The same for a null-terminated name.
inline LONG FindCipherAlgorithm(const OLECHAR* name) noexcept {
  return FindCipherAlgorithm(name, NameLength(name));
}

// CreateCipherEngine makes an engine without a key, with pad setting 0 and empty queues; null for
// an unknown number, or if memory runs out.
std::unique_ptr<CipherEngine> CreateCipherEngine(LONG algorithm) noexcept;

}  // namespace mirolta
