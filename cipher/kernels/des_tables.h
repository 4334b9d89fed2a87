// The tables of DES (FIPS 46-3, appendix 1), as the key schedule and the portable kernels look them
// up.
#pragma once

#include "platform.h"

namespace mirolta {

struct DesTables {
  // substitution[i][v] is the output of an S-box for the six bits v, permuted by P and rotated left by
  // one bit, as the halves are. i counts the S-boxes 1, 3, 5, 7, 2, 4, 6, 8.
  uint32_t substitution[8][64];
  // 63 in every byte, to clear the upper bits of four indexes at once. It is a variable because
  // compilers would apply a constant mask to each index by itself.
  uint32_t index_mask;
  // Permuted choice 1 transposes the key: bit j of all its bytes becomes one byte. key_high[n]
  // spreads the four bits of n to the lowest bits of four bytes, the highest bit to the highest
  // byte. key_low[n] spreads the three upper bits of n, the lowest of them to the highest byte,
  // since D takes the columns in reverse; the lowest bit of n is the parity, which is not used.
  uint32_t key_high[16];
  uint32_t key_low[16];
  // Permuted choice 2 by nibbles: key_choice[h][n][v] has the round key bits that nibble n, counted
  // from the top, of half h (0 is C, 1 is D) gives when its value is v. The upper 16 bits go to the
  // first word of a round key, the lower ones to the second; C gives the upper half of those words,
  // D the lower half.
  uint32_t key_choice[2][7][16];
};

extern const DesTables kDesTables;

#if MIROLTA_KERNELS_FOR(X86_64)
// DesWideTables has the words of DesTables after the expansion E: the inputs of the S-boxes 2, 4,
// 6, 8, 1, 3, 5, 7, the highest byte first, each in the lower six bits of its byte. The words of a round
// key are in memory in this order.
struct DesWideTables {
  uint64_t substitution[8][64];
};

extern const DesWideTables kDesWideTables;
#endif

}  // namespace mirolta
