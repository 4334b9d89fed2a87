// Conversion between numbers and bytes, most significant byte first.
#pragma once

#include "big_int.h"

namespace mirolta {

// FromBytes sets the magnitude of n to bytes, 0 for none. Leading zero bytes are ignored. The sign
// flag is kept.
// Shapes: bytes[length], most significant first.
// Errors: E_OUTOFMEMORY; n is unchanged.
// Source: RFC 8017, 4.2.
HRESULT FromBytes(BigInt& n, const uint8_t* bytes, uint32_t length) noexcept;

// ByteLength returns the bytes of n without leading zeros, 0 for zero.
uint64_t ByteLength(const BigInt& n) noexcept;

// ToBytes writes the magnitude of n.
// Shapes: bytes[ByteLength(n)], most significant first.
// Source: RFC 8017, 4.1.
void ToBytes(uint8_t* bytes, const BigInt& n) noexcept;

}  // namespace mirolta
