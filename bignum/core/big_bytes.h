// Numbers as bytes, most significant first.
#pragma once

#include "big_int.h"

namespace mirolta {

// FromBytes makes n the number in bytes[length]; leading zero bytes count for nothing, no bytes are
// zero. The sign's flag stays.
// Errors: E_OUTOFMEMORY, n unchanged.
HRESULT FromBytes(BigInt& n, const uint8_t* bytes, uint32_t length) noexcept;

// ByteLength returns the number of bytes of n without leading zeros; zero has none.
uint64_t ByteLength(const BigInt& n) noexcept;

// ToBytes writes ByteLength(n) bytes.
void ToBytes(uint8_t* bytes, const BigInt& n) noexcept;

}  // namespace mirolta
