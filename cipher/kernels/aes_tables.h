// The substitution boxes and round tables of AES, computed rather than stored.
#pragma once

#include <cstdint>

namespace mirolta {

// AesTables are the look-ups of the portable transforms and of every key schedule. They hold no
// secret, but a look-up in them is at an address that depends on the data.
struct AesTables {
  // Computes all tables from the field GF(2^8) with generator 3 and modulus x^8+x^4+x^3+x+1.
  // Source: FIPS-197, 5.1.1 and 5.3.2.
  AesTables() noexcept;

  uint8_t substitution[256];
  uint8_t inverse_substitution[256];
  uint32_t round_constants[10];  // 1, 2, 4, ... in the lowest byte of a word
  // forward[0][v] is the column (2s, s, s, 3s) with s = substitution[v], the first row in the
  // lowest byte; forward[i] is forward[0] with every word rotated left by i bytes.
  uint32_t forward[4][256];
  // inverse[0][v] is the column (14s, 9s, 13s, 11s) with s = inverse_substitution[v]; and so on.
  uint32_t inverse[4][256];
};

// SharedAesTables returns the tables that all engines read, computed by the first caller. Every
// instance would compute the same ten thousand bytes, so one copy serves them all.
const AesTables& SharedAesTables() noexcept;

}  // namespace mirolta
