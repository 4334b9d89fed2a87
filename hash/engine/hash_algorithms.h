// The digests by name.
#pragma once

#include "text_bytes.h"
#include "wide_name.h"

namespace mirolta {

class HashEngine;

// Positions in the name table.
enum HashAlgorithm : int {
  kHashMd5 = 0,
  kHashSha1 = 1,
  kHashSha256 = 2,
  kHashAlgorithmCount = 3,
};

extern const NameSlot kHashAlgorithms[kHashAlgorithmCount + 1];

// FindHashAlgorithm returns the position of name[length], matched exactly, or -1.
int FindHashAlgorithm(const OLECHAR* name, uint32_t length) noexcept;
// The same for a name that ends at its first zero character.
inline int FindHashAlgorithm(const OLECHAR* name) noexcept {
  return FindHashAlgorithm(name, NameLength(name));
}

// CreateHashEngine makes the engine with that name, owned by the caller, ready as a plain digest.
// Returns what FindHashAlgorithm returns. *engine is null for an unknown name and, although the
// position is returned, if memory runs out.
int CreateHashEngine(const OLECHAR* name, uint32_t length, HashEngine** engine) noexcept;
inline int CreateHashEngine(const OLECHAR* name, HashEngine** engine) noexcept {
  return CreateHashEngine(name, NameLength(name), engine);
}

// DigestToHex writes a digest as BytesToHex does; length is twice the digest size.
inline HRESULT DigestToHex(const uint8_t* digest, LONG length, OLECHAR* out) noexcept {
  return BytesToHex(digest, length, out);
}

}  // namespace mirolta
