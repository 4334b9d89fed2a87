// The S-boxes and round tables of AES, computed rather than stored.
#pragma once

#include <cstdint>

namespace mirolta {

// AesBoxes are the S-boxes, which hold no secret, but look-ups are at addresses that depend on key and data.
struct AesBoxes {
  // Source: FIPS-197, 4.2, 5.1.1 and 5.3.2.
  AesBoxes() noexcept;

  uint8_t substitution[256];
  uint8_t inverse_substitution[256];
  uint32_t round_constants[10];  // 1, 2, 4, ... in the lowest byte of a word
};

// AesTables are what the portable transforms look up, and with them the portable key expansion.
struct AesTables : AesBoxes {
  // Computes all tables in the field GF(2^8) with modulus x^8+x^4+x^3+x+1.
  AesTables() noexcept;

  // forward[0][v] is the column (2s, s, s, 3s) with s = substitution[v], the first row in the
  // lowest byte; forward[i] is forward[0] with every word rotated left by i bytes.
  uint32_t forward[4][256];
  // inverse[0][v] is the column (14s, 9s, 13s, 11s) with s = inverse_substitution[v]; inverse[i] is
  // rotated in the same way.
  uint32_t inverse[4][256];
};

// SharedAesTables and SharedAesBoxes return the one instance that all engines read, computed by the first
// call. A build has one of them: that of the kernels in its lists.
const AesTables& SharedAesTables() noexcept;
const AesBoxes& SharedAesBoxes() noexcept;

}  // namespace mirolta
