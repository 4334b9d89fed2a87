// The table of digest algorithms, and their engines by name.
#pragma once

#include "text_bytes.h"
#include "wide_name.h"

namespace mirolta {

class HashEngine;

// Positions in kHashAlgorithms.
enum HashAlgorithm : int {
  kHashMd5 = 0,
  kHashSha1 = 1,
  kHashSha256 = 2,
  kHashAlgorithmCount = 3,
};

// The names, ended by an empty slot.
extern const NameSlot kHashAlgorithms[kHashAlgorithmCount + 1];

// FindHashAlgorithm returns the position of name[length], letter case included, or -1.
int FindHashAlgorithm(const OLECHAR* name, uint32_t length) noexcept;
// The same for a null-terminated name.
inline int FindHashAlgorithm(const OLECHAR* name) noexcept {
  return FindHashAlgorithm(name, NameLength(name));
}

// CreateHashEngine makes the engine with that name, in a plain computation; the caller owns it.
// Returns what FindHashAlgorithm returns.
// Errors: *engine is null for an unknown name and, with the position returned, if memory runs out.
int CreateHashEngine(const OLECHAR* name, uint32_t length, HashEngine** engine) noexcept;
inline int CreateHashEngine(const OLECHAR* name, HashEngine** engine) noexcept {
  return CreateHashEngine(name, NameLength(name), engine);
}

// DigestToHex writes a digest in uppercase hexadecimal (see BytesToHex).
// Shapes: digest[length / 2], out[length].
// Errors: those of BytesToHex.
inline HRESULT DigestToHex(const uint8_t* digest, LONG length, OLECHAR* out) noexcept {
  return BytesToHex(digest, length, out);
}

}  // namespace mirolta
